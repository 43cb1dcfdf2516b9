// A run whose power is cut after each of its changes.
#include <gtest/gtest.h>

#include "support/AsOrdinaryUser.h"
#include "trust/RecordedDisk.h"
#include "trust/ReferenceStation.h"
#include "trust/faults.h"

namespace orvane::test {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int kChoices = 0;  // of what the power cut takes
constexpr int kStep = 7;     // between two cuts after which the program starts again
#else
constexpr int kChoices = 8;
constexpr int kStep = 1;
#endif

struct Disk {
  const char* name;
  unsigned kinds;
  bool canListOutput = true;
};

void PrintTo(const Disk& disk, std::ostream* stream) {
  *stream << disk.name;
}

class PowerCut : public testing::TestWithParam<Disk> {
 protected:
  // Runs the program on a disk of this kind.
  int run(const std::filesystem::path& journal) const {
    const std::string listing = GetParam().canListOutput ? "+r" : "-r";
    station.shell("chmod -R a+rwX .; chmod a" + listing + " output");
    const int result = inChild([&] {
      armFaults(station.native().c_str(), GetParam().kinds, Fault::None, 0);
      recordDisk(journal.c_str());
      const AsOrdinaryUser user;
      return station.work();
    });
    station.shell("chmod a+r output");
    return result;
  }

  ReferenceStation station;
};

TEST_P(PowerCut, TakesBackNothingThatWasReportedAndTheNextRunFinishes) {
  station.reset();
  RecordedDisk disk(station.native());
  ASSERT_EQ(run(disk.journal()), 0);
  int cuts = 0;
  disk.cutPower(kChoices, [&](const RecordedDisk::Cut& cut) {
    SCOPED_TRACE(cut.description);
    EXPECT_EQ(station.defects(true), "");
    EXPECT_TRUE(cut.notes.empty() || std::ranges::includes(station.exportedBatches(), cut.notes));
    if (++cuts % kStep == 0) {
      EXPECT_EQ(inChild([&] { return station.work(); }), 0);
      EXPECT_TRUE(station.isFinished());
    }
    return !HasFailure();
  });
  RecordProperty("cuts", cuts);
}

INSTANTIATE_TEST_SUITE_P(Disks, PowerCut,
                         testing::ValuesIn<Disk>({{"Local", 0},
                                                  {"InUserSpace", kFuse},
                                                  {"OnAShare", kFuse | kShare},
                                                  {"ThatCannotBeListed", 0, false}}),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace orvane::test
