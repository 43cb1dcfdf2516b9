#pragma once

#include <string>
#include <vector>

#include "batchdb/BatchStore.h"

namespace orvane {

/// The rows of a query, held by the caller and independent of the connection they came from. The
/// same object can be opened again and again.
class Recordset {
 public:
  /// Runs the query on `activeConnection`. Throws Failure when that is null or not open, or the
  /// query fails; the recordset is closed then.
  void Open(BatchStore* activeConnection, const std::wstring& source, bool readOnly);

  bool IsOpen() const { return isOpen_; }

  /// Drops the rows.
  void Close();

  /// The exact number of rows. Throws Failure when the recordset is closed.
  int RecordCount() const;

  /// A field of the first row, by its name in any letter case. Throws Failure when there is no row
  /// or no such field.
  const Field& Fields(const std::wstring& name) const;

 private:
  bool isOpen_ = false;
  std::vector<Row> rows_;
};

}  // namespace orvane
