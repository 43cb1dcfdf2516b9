#pragma once

#include <string>
#include <string_view>

/// UTF-8, the encoding of Qt, SQLite, the file system and the messages of the platform.
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

}  // namespace orvane
