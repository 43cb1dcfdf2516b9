#pragma once

#include <chrono>

struct sqlite3;

namespace orvane {

/// The wait of one connection for a lock of another program.
struct LockWait {
  std::chrono::steady_clock::time_point begin;
};

/// Makes the statements of `connection` wait up to 5 seconds for a lock, yielding to the window's
/// events meanwhile. `wait` must live as long as the connection.
void waitForLocks(sqlite3* connection, LockWait& wait);

}  // namespace orvane
