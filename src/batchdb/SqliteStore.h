#pragma once

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

#include "batchdb/BatchStore.h"
#include "batchdb/lock_wait.h"

struct sqlite3;
struct sqlite3_stmt;

namespace orvane {

/// A store in one SQLite file.
///
/// A lock that another program holds is waited for with the window alive, as long as the patience
/// says; then the statement fails with SQLite's "database is locked". A statement also fails when
/// the file at the path is no longer the one that was opened.
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

  struct FileIdentity {
    dev_t device;
    ino_t node;
    bool operator==(const FileIdentity&) const = default;
  };

  FileIdentity identityOfFile() const;
  Statement prepare(const std::wstring& sql);
  bool step(const Statement& statement) const;

  std::string path_;
  FileIdentity identity_{};
  LockWait lockWait_;  // before the connection, which uses it to its end
  Connection connection_;
};

}  // namespace orvane
