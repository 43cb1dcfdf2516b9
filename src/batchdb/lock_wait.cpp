#include "batchdb/lock_wait.h"

#include <sqlite3.h>
#include <thread>

#include "foundation/WindowServices.h"

namespace orvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLongestWait = std::chrono::seconds(5);
constexpr auto kStep = std::chrono::milliseconds(20);

// SQLite's busy handler: called again and again while the lock is held; 0 gives up.
int waitOneStep(void* lockWait, int earlierCalls) noexcept {
  auto& wait = *static_cast<LockWait*>(lockWait);
  if (earlierCalls == 0) wait.begin = Clock::now();
  if (Clock::now() - wait.begin >= kLongestWait) return 0;
  try {
    windowServices().yield();
  } catch (...) {  // no exception may pass through SQLite
    return 0;
  }
  std::this_thread::sleep_for(kStep);
  return 1;
}

}  // namespace

void waitForLocks(sqlite3* connection, LockWait& wait) {
  sqlite3_busy_handler(connection, waitOneStep, &wait);
}

}  // namespace orvane
