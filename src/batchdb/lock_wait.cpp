#include "batchdb/lock_wait.h"

#include <sqlite3.h>
#include <thread>
#include <utility>

#include "foundation/WindowServices.h"

namespace orvane {
namespace {

constexpr auto kStep = std::chrono::milliseconds(20);

}  // namespace

LockWait::LockWait(LockPatience patience) : patience_(std::move(patience)) {}

// SQLite calls the handler again and again while the lock is held; 0 gives up.
void LockWait::installIn(sqlite3* connection) {
  const auto handler = [](void* self, int) noexcept -> int {
    try {
      return static_cast<LockWait*>(self)->waitOneStep() ? 1 : 0;
    } catch (...) {  // no exception may pass through SQLite
      return 0;
    }
  };
  sqlite3_busy_handler(connection, handler, this);
}

bool LockWait::isStopRequested() const {
  return patience_.isStopRequested && patience_.isStopRequested();
}

bool LockWait::waitOneStep() {
  if (!wait_) wait_ = {Clock::now(), isStopRequested()};
  const auto longest = wait_->beganAfterStop ? patience_.longestAfterStop : patience_.longest;
  if (Clock::now() - wait_->begin >= longest) return false;
  windowServices().yield();
  if (isStopRequested() && !wait_->beganAfterStop) return false;
  std::this_thread::sleep_for(kStep);
  return true;
}

}  // namespace orvane
