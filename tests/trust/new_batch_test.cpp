// A batch is made of a folder of scans, and the power is cut after each of the changes.
#include <fcntl.h>
#include <gtest/gtest.h>

#include "batchdb/SqliteStore.h"
#include "export/ExportStation.h"
#include "foundation/FileDescriptor.h"
#include "intake/NewBatch.h"
#include "trust/RecordedDisk.h"
#include "trust/ReferenceStation.h"
#include "trust/faults.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

#ifdef __SANITIZE_ADDRESS__
constexpr int kChoices = 0;  // of what the power cut takes
constexpr int kStep = 3;     // between two cuts after which a batch is added
#else
constexpr int kChoices = 6;
constexpr int kStep = 1;
#endif

struct Way {
  const char* name;
  bool isInPlace;  // the pages are copied below `Batchs` by others, who flush nothing
  unsigned kinds;
};

void PrintTo(const Way& way, std::ostream* stream) {
  *stream << way.name;
}

class NewBatch : public testing::TestWithParam<Way> {
 protected:
  NewBatch() {
    source.shell(
        "mkdir -p N/D && convert -size 40x30 gradient: N/D/Q.png && cd N && convert "
        "D/Q.png -density 200 2.tif && cp 2.tif D/P.tif && convert D/Q.png 1.jpg");
    station.createTable({"Old"});
    station.addDocument("Old/D", {"P"});
    old = treeOf("Old");
    EXPECT_EQ(inChild([&] { return add(); }), 0);
    whole = treeOf("N");
    fs::remove_all(station.scan("N"));
    station.createTable({"Old"});
  }

  std::map<std::string, std::string> treeOf(const std::string& batch) const {
    if (!fs::exists(station.scan(batch))) return {};
    return ExportStation::contentOf(station.scan(batch));
  }

  // Copies the whole batch, as far as it is not there.
  void deliver() const {
    fs::create_directory(station.scan("N"));
    for (const auto& [name, bytes] : whole) {
      if (bytes == ExportStation::kFolder) fs::create_directory(station.scan("N/" + name));
    }
    for (const auto& [name, bytes] : whole) {
      if (bytes == ExportStation::kFolder) continue;
      FileDescriptor file(pathText(station.scan("N/" + name)), O_WRONLY | O_CREAT | O_TRUNC);
      file.writeAll(bytes);
      file.close();
    }
  }

  // Makes the batch N wait, as a user would; returns an exit code.
  int add() const {
    try {
      if (GetParam().isInPlace && !whole.empty()) deliver();
      SqliteStore store;
      store.open(station.path(L"Orvane.dll"));
      const bool isThere = fs::exists(station.scan("N"));
      const IntakePlan plan =
          planIntake(store, isThere ? station.path(L"Batchs\\N") : source.path(L"N"), L"N");
      carryOut(store, plan, L"2024-03-05 08:00:00", [](const IntakeProgress&) {});
      noteInJournal("added");
      return 0;
    } catch (const std::exception& failure) {
      std::cerr << failure.what() << '\n';
      return 1;
    }
  }

  bool isWaiting() const { return station.stateOf("N") == "完成扫描|"; }

  TempStation source;  // before the station, whose folder is the program's then
  ExportStation station;
  std::map<std::string, std::string> old, whole;
};

TEST_P(NewBatch, IsWholeAfterAPowerCutOrDoesNotWaitAndCanBeAdded) {
  RecordedDisk disk(station.native());
  ASSERT_EQ(inChild([&] {
              armFaults(station.native().c_str(), GetParam().kinds, Fault::None, 0);
              recordDisk(disk.journal().c_str());
              return add();
            }),
            0);
  int cuts = 0;
  disk.cutPower(kChoices, [&](const RecordedDisk::Cut& cut) {
    SCOPED_TRACE(cut.description);
    const bool hasName = fs::exists(station.scan("N"));
    EXPECT_TRUE(treeOf("N") == whole || (!isWaiting() && (GetParam().isInPlace || !hasName)));
    EXPECT_TRUE(isWaiting() || cut.notes.empty());
    EXPECT_TRUE(treeOf("Old") == old && station.stateOf("Old") == "完成扫描|");
    if (!isWaiting() && ++cuts % kStep == 0) {
      EXPECT_EQ(inChild([&] { return add(); }), 0);
      EXPECT_TRUE(isWaiting() && treeOf("N") == whole);
      EXPECT_TRUE(hasName || !fs::exists(station.scan(".station-add")));
    }
    return !HasFailure();
  });
  EXPECT_GT(cuts, 2 * kStep);
}

INSTANTIATE_TEST_SUITE_P(Ways, NewBatch,
                         testing::ValuesIn<Way>({{"Copied", false, 0},
                                                 {"CopiedInUserSpace", false, kFuse},
                                                 {"InPlace", true, 0},
                                                 {"InPlaceInUserSpace", true, kFuse}}),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace orvane::test
