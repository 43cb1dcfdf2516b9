#pragma once

#include <string>
#include <string_view>

/// Conversions between the texts of the program and bytes: UTF-8, the encoding of Qt, SQLite and
/// platform messages, and code page 936 (GBK), the encoding of `Doc.dat`, `data.ini` and the logs.
namespace orvane {

/// Decodes UTF-8. Each malformed byte becomes U+FFFD.
std::wstring fromUtf8(std::string_view bytes);

/// Decodes UTF-8. `malformedByte` converts each malformed byte.
std::wstring fromUtf8(std::string_view bytes, wchar_t (*malformedByte)(unsigned char));

/// Encodes to UTF-8. A lone surrogate or a value above U+10FFFF becomes U+FFFD.
std::string toUtf8(std::wstring_view text);

/// True for the code points that UTF-8 can encode: up to U+10FFFF, except surrogates.
constexpr bool isUnicodeScalar(wchar_t character) {
  const auto value = static_cast<unsigned long>(character);
  return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

/// Decodes code page 936. A byte or byte pair without a character becomes U+FFFD.
std::wstring fromAnsi(std::string_view bytes);

/// Encodes to code page 936. A character outside the code page becomes "?".
std::string toAnsi(std::wstring_view text);

/// Encodes to code page 936. Throws Failure for a character outside the code page.
std::string toAnsiStrict(std::wstring_view text);

}  // namespace orvane
