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

class Faults : public testing::Test {
 protected:
  // One start of the program under a fault; `kNever` counts the calls.
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

  // The run under the fault, what it left, and the next run.
  int expectRecovery(unsigned kinds, Fault fault, long at) const {
    SCOPED_TRACE("call " + std::to_string(at));
    station.reset();
    const int answer = run(kinds, fault, at);
    EXPECT_EQ(station.wrongs(answer == kKilled), "");
    const int next = answer == 0 ? 0 : run(0, Fault::None, 0);
    EXPECT_EQ(next, 0);
    EXPECT_TRUE(station.isFinished()) << (answer == 0 ? "and nothing was told" : "in the next run");
    return answer;
  }

  ReferenceStation station;
};

TEST_F(Faults, ACallThatFailsIsToldAndTheNextRunFinishes) {
  const long calls = callsOf(kAllButRemove);
  int told = 0;
  for (long at = 1; at <= calls && !HasFailure(); at += kStep) {
    const int answer = expectRecovery(kAllButRemove, Fault::Fail, at);
    EXPECT_LE(answer, 1);
    told += answer;
  }
  EXPECT_GT(told, calls / kStep / 2);
  RecordProperty("calls", static_cast<int>(calls));
  RecordProperty("told", told);
}

TEST_F(Faults, AFullDiskIsToldAndTheNextRunFinishes) {
  const long calls = callsOf(kWrite);
  for (long at = 1; at <= calls && !HasFailure(); at += 3 * kStep) {
    EXPECT_LE(expectRecovery(kWrite, Fault::FailOnward, at), 1);
  }
}

TEST_F(Faults, AWriteInPartsIsWholeInTheEnd) {
  const long calls = callsOf(kWrite);
  for (long at = 1; at <= calls && !HasFailure(); at += kStep) {
    EXPECT_EQ(expectRecovery(kWrite, Fault::Short, at), 0);
  }
}

TEST_F(Faults, AfterAKillANewStartFinishesTheTable) {
  const long calls = callsOf(kAllButMemory);
  for (long at = 1; at <= calls && !HasFailure(); at += std::max(1L, calls / 100) * kStep) {
    EXPECT_EQ(expectRecovery(kAllButMemory, Fault::Kill, at), kKilled);
  }
}

}  // namespace
}  // namespace orvane::test
