#include "batchdb/Recordset.h"

#include "foundation/Failure.h"
#include "foundation/letter_case.h"

namespace orvane {

void Recordset::Open(BatchStore* activeConnection, const std::wstring& source, bool readOnly) {
  Close();
  if (activeConnection == nullptr || !activeConnection->isOpen()) {
    throw Failure("there is no open connection to the database");
  }
  rows_ = activeConnection->query(source, readOnly);
  isOpen_ = true;
}

void Recordset::Close() {
  isOpen_ = false;
  rows_.clear();
}

int Recordset::RecordCount() const {
  if (!isOpen_) throw Failure("the recordset is closed");
  return static_cast<int>(rows_.size());
}

const Field& Recordset::Fields(const std::wstring& name) const {
  if (rows_.empty()) throw Failure("the recordset has no current record");
  for (const Field& field : rows_.front()) {
    if (asciiLowerCase(field.name()) == asciiLowerCase(name)) return field;
  }
  throw Failure(L"there is no field " + name);
}

}  // namespace orvane
