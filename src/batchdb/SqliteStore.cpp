#include "batchdb/SqliteStore.h"

#include <algorithm>
#include <cerrno>
#include <sqlite3.h>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/text_encoding.h"

namespace orvane {

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
  isEndedByStop_ = isStopRequested() && !wait_->beganAfterStop;
  if (isEndedByStop_) return false;
  std::this_thread::sleep_for(patience_.step);
  return true;
}

namespace {

constexpr int kLargestValue = 64 << 20;  // bytes; a larger one in the file fails the query

constexpr std::wstring_view kSpace = L" \t\n\v\f\r";

// Takes the next word from the front of `sql`.
std::wstring_view takeWord(std::wstring_view& sql) {
  sql.remove_prefix(std::min(sql.find_first_not_of(kSpace), sql.size()));
  const std::wstring_view word = sql.substr(0, sql.find_first_of(kSpace));
  sql.remove_prefix(word.size());
  return word;
}

// SQLite has no "select top N": the clause becomes "limit N" at the end of the query.
std::wstring withLimitForTop(const std::wstring& sql) {
  std::wstring_view rest = sql;
  if (asciiLowerCase(takeWord(rest)) != L"select") return sql;
  if (asciiLowerCase(takeWord(rest)) != L"top") return sql;
  const std::wstring_view number = takeWord(rest);
  if (number.empty() || number.find_first_not_of(L"0123456789") != number.npos || rest.empty()) {
    return sql;
  }
  return L"select " + std::wstring(trimmed(rest, L" \t\r\n;")) + L" limit " + std::wstring(number);
}

Failure sqliteFailure(sqlite3* connection) {
  return Failure(sqlite3_errmsg(connection));
}

void bindTexts(sqlite3* connection, sqlite3_stmt* statement,
               const std::vector<std::wstring>& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string text = toUtf8(values[i]);
    const int result = sqlite3_bind_text64(statement, static_cast<int>(i) + 1, text.data(),
                                           text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    if (result != SQLITE_OK) throw sqliteFailure(connection);
  }
}

std::wstring columnText(sqlite3_stmt* statement, int column) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
  const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return bytes == nullptr ? std::wstring() : fromUtf8({bytes, length});
}

Field::Value columnValue(sqlite3_stmt* statement, int column) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER:
      return sqlite3_column_int64(statement, column);
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, column);
    default:
      return columnText(statement, column);
  }
}

Row currentRow(sqlite3_stmt* statement) {
  Row row;
  for (int i = 0; i < sqlite3_column_count(statement); ++i) {
    row.emplace_back(fromUtf8(sqlite3_column_name(statement, i)), columnValue(statement, i));
  }
  return row;
}

}  // namespace

void SqliteStore::Close::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

void SqliteStore::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteStore::SqliteStore(LockPatience patience) : lockWait_(std::move(patience)) {}
SqliteStore::~SqliteStore() = default;

void SqliteStore::open(const std::wstring& path) {
  connection_.reset();
  path_ = nativePath(path);
  sqlite3* handle = nullptr;
  const int result = sqlite3_open_v2(path_.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
  Connection connection(handle);  // SQLite returns a handle even after a failure
  if (result != SQLITE_OK) throw sqliteFailure(handle);
  // SQLite opens a file without write permission for reading only, for as long as it is open.
  if (sqlite3_db_readonly(handle, "main") == 1) throw Failure(sqlite3_errstr(SQLITE_READONLY));
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLargestValue);
  lockWait_.installIn(handle);

  identity_ = identityOfFile();
  connection_ = std::move(connection);
  try {
    execute(L"select count(*) from sqlite_master");  // the first statement reads the file
    // By default a power cut can take back the last change, because SQLite does not sync the folder
    // after it has removed its journal.
    execute(L"pragma synchronous = extra");
  } catch (const Failure&) {
    connection_.reset();
    throw;
  }
}

void SqliteStore::execute(const std::wstring& sql, const std::vector<std::wstring>& values) {
  const Statement statement = prepare(sql);
  bindTexts(connection_.get(), statement.get(), values);
  while (step(statement)) {
  }
}

std::vector<Row> SqliteStore::query(const std::wstring& sql, bool readOnly,
                                    const std::vector<std::wstring>& values) {
  const Statement statement = prepare(withLimitForTop(sql));
  if (readOnly && sqlite3_stmt_readonly(statement.get()) == 0) {
    throw Failure(sqlite3_errstr(SQLITE_READONLY));
  }
  bindTexts(connection_.get(), statement.get(), values);
  std::vector<Row> rows;
  while (step(statement)) rows.push_back(currentRow(statement.get()));
  return rows;
}

// A file that was replaced stays open under no name; what is written to it is lost.
FileIdentity SqliteStore::identityOfFile() const {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) throw systemFailure(errno);
  return identityOf(status);
}

SqliteStore::Statement SqliteStore::prepare(const std::wstring& sql) {
  if (!connection_) throw Failure("the connection to the database is closed");
  if (identityOfFile() != identity_) throw Failure("the database file has been replaced");
  lockWait_.beginStatement();
  const std::string text = toUtf8(sql);
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v2(connection_.get(), text.c_str(), -1, &statement, nullptr);
  if (result != SQLITE_OK) throw failure();
  return Statement(statement);
}

// After a stop, the box must not look like a fault.
Failure SqliteStore::failure() const {
  if (!lockWait_.isEndedByStop()) return sqliteFailure(connection_.get());
  return Failure(L"按了“停止”，不再等待数据库，没有出错（别的程序正占用着它：" +
                 description(sqliteFailure(connection_.get())) + L"）");
}

// True when there is a row.
bool SqliteStore::step(const Statement& statement) const {
  const int result = sqlite3_step(statement.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) throw failure();
  return result == SQLITE_ROW;
}

}  // namespace orvane
