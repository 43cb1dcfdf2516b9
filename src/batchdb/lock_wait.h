#pragma once

#include <chrono>
#include <functional>
#include <optional>

struct sqlite3;

namespace orvane {

/// How long a statement waits for a lock that another program holds.
struct LockPatience {
  std::chrono::milliseconds longest = std::chrono::minutes(10);
  /// The longest wait when a stop was asked for before it began: the last batch still gets its
  /// state beside a scanning station that writes now and then.
  std::chrono::milliseconds longestAfterStop = std::chrono::seconds(5);
  /// True once a stop was asked for, which ends a wait that is going on. May be empty.
  std::function<bool()> isStopRequested;
};

/// The waiting of one connection: yields to the window's events until the lock is free, a stop is
/// asked for, or the time is over. The statement fails then with SQLite's "database is locked".
class LockWait {
 public:
  explicit LockWait(LockPatience patience);

  /// Makes the statements of `connection` wait. The object must live as long as the connection.
  void installIn(sqlite3* connection);

  /// The next wait is the first one of a new statement, which has the whole time before it.
  void beginStatement() { wait_.reset(); }

 private:
  using Clock = std::chrono::steady_clock;

  struct Wait {
    Clock::time_point begin;
    bool beganAfterStop;
  };

  bool isStopRequested() const;
  bool waitOneStep();

  LockPatience patience_;
  std::optional<Wait> wait_;
};

}  // namespace orvane
