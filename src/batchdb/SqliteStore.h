#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batchdb/BatchStore.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/FileState.h"

struct sqlite3;
struct sqlite3_stmt;

namespace orvane {

/// How long a statement waits for a lock that another program holds.
struct LockPatience {
  std::chrono::milliseconds longest = std::chrono::minutes(10);
  /// The longest wait of a statement that begins after a stop was requested: the last batch still
  /// gets its state while a scanning station writes now and then.
  std::chrono::milliseconds longestAfterStop = std::chrono::seconds(5);
  /// True once a stop was requested, which ends the current wait. May be empty.
  std::function<bool()> isStopRequested = {};
  std::chrono::milliseconds step = std::chrono::milliseconds(20);  ///< between two attempts
};

/// The waiting of one connection: handles the window's events until the lock is free, a stop is
/// requested, or the time is over. Then the statement fails with SQLite's "database is locked";
/// after a stop, the text says that the operator ended the wait.
class LockWait {
 public:
  explicit LockWait(LockPatience patience);

  /// Makes the statements of `connection` wait. The object must live as long as the connection.
  void installIn(sqlite3* connection);

  /// The next wait belongs to a new statement and has the whole time.
  void beginStatement() {
    wait_.reset();
    isEndedByStop_ = false;
  }

  /// True if a stop ended the wait of the current statement.
  bool isEndedByStop() const { return isEndedByStop_; }

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
  bool isEndedByStop_ = false;
};

/// A store in one SQLite file.
///
/// A statement waits for a lock of another program as long as the patience allows, while the window
/// stays alive. A statement fails when the file at the path is no longer the one that was opened.
/// What a statement has changed survives a power cut.
class SqliteStore : public BatchStore {
 public:
  explicit SqliteStore(LockPatience patience = {});
  ~SqliteStore() override;

  void open(const std::wstring& path) override;
  bool isOpen() const override { return connection_ != nullptr; }
  void execute(const std::wstring& sql, const std::vector<std::wstring>& values = {}) override;
  std::vector<Row> query(const std::wstring& sql, bool readOnly,
                         const std::vector<std::wstring>& values = {}) override;

 private:
  struct Close {
    void operator()(sqlite3* connection) const;
  };
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  using Connection = std::unique_ptr<sqlite3, Close>;
  using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

  FileIdentity identityOfFile() const;
  Failure failure() const;
  Statement prepare(const std::wstring& sql);
  bool step(const Statement& statement) const;

  std::string path_;
  FileIdentity identity_{};
  LockWait lockWait_;  // declared before the connection, which uses it
  Connection connection_;
};

}  // namespace orvane
