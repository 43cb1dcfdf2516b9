#pragma once

#include <string>
#include <string_view>

/// The edge to UTF-8, the encoding of Qt, SQLite and platform messages.
namespace orvane {

/// Decodes UTF-8. Each malformed byte becomes U+FFFD.
std::wstring fromUtf8(std::string_view bytes);

/// Encodes to UTF-8. A code point that is no character (a lone surrogate) becomes U+FFFD.
std::string toUtf8(std::wstring_view text);

}  // namespace orvane
