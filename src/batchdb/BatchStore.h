#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvane {

/// One value of a row, with the name of its column.
class Field {
 public:
  /// NULL, a whole number, a real number or a text.
  using Value = std::variant<std::monostate, std::int64_t, double, std::wstring>;

  Field(std::wstring name, Value value);

  const std::wstring& name() const { return name_; }
  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }

  /// The value as a text. Throws Failure for NULL.
  std::wstring text() const;

  /// The value as a 16-bit whole number, a half rounded to the even neighbour; the whole of a text
  /// must be a number. Throws Failure for NULL, for a text that is no number and out of range.
  std::int16_t toInt16() const;

 private:
  std::wstring name_;
  Value value_;
};

using Row = std::vector<Field>;

/// One connection to one database file. Every operation but `isOpen` throws Failure with the
/// store's own text.
class BatchStore {
 public:
  virtual ~BatchStore() = default;

  /// Opens the database file at a path text, with no user and no password. The file must exist and
  /// be a database; it is never created.
  virtual void open(const std::wstring& path) = 0;

  /// True between a successful `open` and the end of the object.
  virtual bool isOpen() const = 0;

  /// Runs one statement and drops any result. Each `?` in `sql` stands for one of `values`, in
  /// their order. It is no failure when no row matches.
  virtual void execute(const std::wstring& sql, const std::vector<std::wstring>& values = {}) = 0;

  /// Runs a query and returns all its rows. A leading "select top N", in any letter case, means the
  /// first N rows. With `readOnly` a statement that would change the file is refused. `values` as
  /// in `execute`.
  virtual std::vector<Row> query(const std::wstring& sql, bool readOnly,
                                 const std::vector<std::wstring>& values = {}) = 0;
};

/// Makes a store that is not open yet.
using BatchStoreFactory = std::function<std::unique_ptr<BatchStore>()>;

/// The rows of a query, held by the caller and independent of the connection they came from. The
/// same object can be opened again.
class Recordset {
 public:
  /// Runs the query on `activeConnection`. Throws Failure when that is null or not open, or when
  /// the query fails; the recordset is closed then.
  void Open(BatchStore* activeConnection, const std::wstring& source, bool readOnly);

  bool IsOpen() const { return rows_.has_value(); }

  /// Drops the rows.
  void Close() { rows_.reset(); }

  /// The number of rows. Throws Failure when the recordset is closed.
  int RecordCount() const;

  /// A field of the first row, by its name in any letter case. Throws Failure when there is no row
  /// or no such field.
  const Field& Fields(const std::wstring& name) const;

 private:
  std::optional<std::vector<Row>> rows_;
};

}  // namespace orvane
