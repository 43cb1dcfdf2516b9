#include "batch_database.h"

#include <memory>
#include <sqlite3.h>
#include <stdexcept>

#include "batch_table.h"

namespace orvane::sample {
namespace {

constexpr const char* kInsert =
    "insert into T_BatchInfo (BatchID, BatchState, CreateDate, PaperNum, ScanUser, ScanStation)"
    " values (?, ?, ?, ?, ?, ?)";

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct EndStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, EndStatement>;

void check(sqlite3* database, int result) {
  if (result != SQLITE_OK && result != SQLITE_DONE) {
    throw std::runtime_error(std::string("database: ") + sqlite3_errmsg(database));
  }
}

Database openNew(const std::filesystem::path& file) {
  std::filesystem::remove(file);
  sqlite3* raw = nullptr;
  const int result =
      sqlite3_open_v2(file.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  Database database(raw);
  check(raw, result);
  return database;
}

void insert(sqlite3* database, const BatchRow& row) {
  sqlite3_stmt* raw = nullptr;
  check(database, sqlite3_prepare_v2(database, kInsert, -1, &raw, nullptr));
  const Statement statement(raw);
  const auto bind = [&](int column, const std::string& text) {
    check(database, sqlite3_bind_text(raw, column, text.c_str(), -1, SQLITE_TRANSIENT));
  };
  bind(1, row.batchId);
  bind(2, row.batchState);
  bind(3, row.createDate);
  check(database, sqlite3_bind_int(raw, 4, row.paperNum));
  bind(5, row.scanUser);
  bind(6, row.scanStation);
  check(database, sqlite3_step(raw));
}

}  // namespace

void createBatchDatabase(const std::filesystem::path& file, const std::vector<BatchRow>& rows) {
  const Database database = openNew(file);
  check(database.get(), sqlite3_exec(database.get(), kBatchTable, nullptr, nullptr, nullptr));
  for (const BatchRow& row : rows) insert(database.get(), row);
}

}  // namespace orvane::sample
