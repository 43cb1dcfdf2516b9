#pragma once

#include <string>
#include <string_view>

#include "foundation/utf8.h"

/// Code page 936 (GBK), the encoding of `Doc.dat`, `data.ini` and the logs.
namespace orvane {

/// Decodes code page 936. A byte or byte pair without a character becomes U+FFFD.
std::wstring fromAnsi(std::string_view bytes);

/// Encodes to code page 936. A character outside the code page becomes "?".
std::string toAnsi(std::wstring_view text);

/// Encodes to code page 936. Throws Failure for a character outside the code page.
std::string toAnsiStrict(std::wstring_view text);

}  // namespace orvane
