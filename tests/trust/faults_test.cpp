// Every system call of a small export fails once, or is the last one before the process is killed.
#include "trust/faults.h"

#include <csignal>
#include <gtest/gtest.h>

#include "trust/ReferenceStation.h"

namespace orvane::test {
namespace {

constexpr int kKilled = 128 + SIGKILL;
#ifdef __SANITIZE_ADDRESS__  // a sample of the calls will do
constexpr long kStep = 7;
#else
constexpr long kStep = 1;
#endif

struct Case {
  const char* name;
  unsigned kinds;
  Fault fault;
  long step;         // of the calls
  int lowest, most;  // answers of the run
};

void PrintTo(const Case& c, std::ostream* stream) {
  *stream << c.name;
}

class Faults : public testing::TestWithParam<Case> {
 protected:
  // One start of the program under a fault.
  int run(unsigned kinds, Fault fault, long at) const {
    return inChild([&] {
      armFaults(station.native().c_str(), kinds, fault, at);
      return station.work();
    });
  }

  long callsOf(unsigned kinds) const {
    station.reset();
    inChild([&] {
      armFaults(station.native().c_str(), kinds, Fault::None, 0);
      station.work();
      writeBytes(station.native("count"), std::to_string(disarmFaults()));
      return 0;
    });
    return std::stol(readBytes(station.native("count")));
  }

  ReferenceStation station;
};

TEST_P(Faults, AreToldLoseNothingAndTheNextRunFinishes) {
  const Case& c = GetParam();
  const long calls = callsOf(c.kinds);
  EXPECT_GT(calls, 50);
  int told = 0;
  for (long at = 1; at <= calls && !HasFailure(); at += c.step * kStep) {
    SCOPED_TRACE("call " + std::to_string(at) + " of " + std::to_string(calls));
    station.reset();
    const int answer = run(c.kinds, c.fault, at);
    EXPECT_GE(answer, c.lowest);
    EXPECT_LE(answer, c.most);
    EXPECT_EQ(station.wrongs(c.most > 1), "");
    told += answer == 0 ? 0 : 1;
    const int next = answer == 0 ? 0 : run(0, Fault::None, 0);
    EXPECT_EQ(next, 0);
    EXPECT_TRUE(station.isFinished()) << (answer == 0 ? "and nothing was told" : "in the next run");
  }
  RecordProperty("calls", static_cast<int>(calls));
  RecordProperty("told", told);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Faults,
                         testing::ValuesIn<Case>({
                             {"OneCall", kAll, Fault::Fail, 1, 0, 1},
                             {"FullDisk", kWrite, Fault::FailOnward, 3, 0, 1},
                             {"DiskThatIsGone", kAllButMemory, Fault::FailOnward, 8, 0, 2},
                             {"WritesInParts", kWrite, Fault::Short, 2, 0, 0},
                             {"Kill", kAllButMemory, Fault::Kill, 3, kKilled, kKilled},
                         }),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace orvane::test
