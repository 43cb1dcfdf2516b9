#pragma once

#include <string>
#include <string_view>

/// Conversion from and to code page 936 (GBK), the encoding of `Doc.dat`, `data.ini` and the logs.
namespace orvane {

/// Decodes code page 936. A byte or byte pair that is no character becomes U+FFFD.
std::wstring fromAnsi(std::string_view bytes);

/// Encodes to code page 936. A character that the code page does not have becomes "?".
std::string toAnsi(std::wstring_view text);

/// Encodes to code page 936. Throws Failure when the code page does not have a character of `text`.
std::string toAnsiStrict(std::wstring_view text);

}  // namespace orvane
