#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace orvane {

/// One value of a row, under the name of its column.
class Field {
 public:
  /// NULL, a whole number, a real number or a text.
  using Value = std::variant<std::monostate, std::int64_t, double, std::wstring>;

  Field(std::wstring name, Value value);

  const std::wstring& name() const { return name_; }
  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }

  /// The value as a text. Throws Failure for NULL.
  std::wstring text() const;

  /// The value as a 16-bit whole number, a half going to the even neighbour; a text must be a
  /// number as a whole. Throws Failure for NULL, for no number and for one out of range.
  std::int16_t toInt16() const;

 private:
  std::wstring name_;
  Value value_;
};

}  // namespace orvane
