#pragma once

#include <cstdint>
#include <string_view>

/// Numbers and truth values as texts hold them.
namespace orvane {

/// Reads a number from the front of `text`: leading blanks are skipped, reading stops at the first
/// character that cannot continue a decimal number (sign, digits, one point, an exponent). No
/// number at all gives 0.
double numericPrefix(std::wstring_view text);

/// Rounds to a whole number, a half going to the even neighbour, and narrows it to 16 bits. Throws
/// Failure when the result lies outside -32768 to 32767.
std::int16_t toInt16(double value);

/// Reads the whole of `text` (outer blanks allowed) as a number and narrows it to 16 bits. Throws
/// Failure for a text that is no number and for one out of range.
std::int16_t toInt16(std::wstring_view text);

/// Reads True or False in any case, or a number, 0 being false and all others true. Throws Failure
/// for any other text.
bool toBoolean(std::wstring_view text);

}  // namespace orvane
