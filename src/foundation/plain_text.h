#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Blanks, letter case, numbers and truth values of texts, whatever the locale.
namespace orvane {

/// The characters that count as blanks around a number or a word.
inline constexpr std::wstring_view kBlanks = L" \t\r\n";

/// `text` without the characters in `blanks` at both ends.
std::wstring_view trimmed(std::wstring_view text, std::wstring_view blanks = kBlanks);
std::string_view trimmed(std::string_view text, std::string_view blanks);

/// `text` with A to Z in lower case; all other letters stay.
std::wstring asciiLowerCase(std::wstring_view text);

/// The capital of a letter of any script; any other character as it is.
wchar_t upperCase(wchar_t character);

/// The digits of a number from 0 on, filled with "0" on the left to a length of `width`. A longer
/// number keeps all its digits.
std::wstring zeroFilled(int number, std::size_t width);

/// Reads a number from the front of `text`: leading blanks are skipped, reading stops at the first
/// character that cannot continue a decimal number (sign, digits, one point, an exponent). Without
/// a number the result is 0.
double numericPrefix(std::wstring_view text);

/// Rounds to a whole number, a half to the even neighbour, and narrows it to 16 bits. Throws
/// Failure when the result is outside -32768 to 32767.
std::int16_t toInt16(double value);

/// Reads the whole of `text` (outer blanks allowed) as a number and narrows it to 16 bits. Throws
/// Failure for a text that is no number and for one out of range.
std::int16_t toInt16(std::wstring_view text);

/// Reads True or False in any case, or a number, 0 being false and all others true. Throws Failure
/// for any other text.
bool toBoolean(std::wstring_view text);

}  // namespace orvane
