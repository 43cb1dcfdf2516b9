#include "batchdb/BatchStore.h"

#include <charconv>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/plain_text.h"

namespace orvane {
namespace {

template <typename Number>
std::wstring digitsOf(Number number) {
  char digits[32];  // the shortest form of a double has 24 characters at most
  const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  return std::wstring(static_cast<const char*>(digits), end);
}

}  // namespace

Field::Field(std::wstring name, Value value) : name_(std::move(name)), value_(std::move(value)) {}

std::wstring Field::text() const {
  if (const auto* text = std::get_if<std::wstring>(&value_)) return *text;
  if (const auto* whole = std::get_if<std::int64_t>(&value_)) return digitsOf(*whole);
  if (const auto* real = std::get_if<double>(&value_)) return digitsOf(*real);
  throw Failure(L"the field " + name_ + L" holds no value");
}

std::int16_t Field::toInt16() const {
  if (const auto* real = std::get_if<double>(&value_)) return orvane::toInt16(*real);
  return orvane::toInt16(std::wstring_view(text()));
}

void Recordset::Open(BatchStore* activeConnection, const std::wstring& source, bool readOnly) {
  Close();
  if (activeConnection == nullptr || !activeConnection->isOpen()) {
    throw Failure("there is no open connection to the database");
  }
  rows_ = activeConnection->query(source, readOnly);
}

int Recordset::RecordCount() const {
  if (!rows_) throw Failure("the recordset is closed");
  return static_cast<int>(rows_->size());
}

const Field& Recordset::Fields(const std::wstring& name) const {
  if (!rows_ || rows_->empty()) throw Failure("the recordset has no current record");
  for (const Field& field : rows_->front()) {
    if (asciiLowerCase(field.name()) == asciiLowerCase(name)) return field;
  }
  throw Failure(L"there is no field " + name);
}

}  // namespace orvane
