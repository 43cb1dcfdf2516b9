#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Blanks, letter case, numbers and truth values in texts, independent of the locale.
namespace orvane {

/// The blanks around a number or a word.
inline constexpr std::wstring_view kBlanks = L" \t\r\n";

/// `text` without the characters in `blanks` at both ends.
std::wstring_view trimmed(std::wstring_view text, std::wstring_view blanks = kBlanks);
std::string_view trimmed(std::string_view text, std::string_view blanks);

/// `text` with A to Z in lower case. Other letters are kept.
std::wstring asciiLowerCase(std::wstring_view text);

/// The upper case of a letter of any script. Other characters are returned unchanged.
wchar_t upperCase(wchar_t character);
std::wstring upperCase(std::wstring text);

/// True if `text` has a digit from 0 to 9 wherever `shape` has a "0", and is equal to it elsewhere.
bool hasShape(std::wstring_view text, std::wstring_view shape);

/// `text` with a space in place of every character of a line end.
std::wstring inOneLine(std::wstring text);

/// A number, at least 0, padded with "0" on the left to `width` digits. A longer number keeps all
/// its digits.
std::wstring zeroFilled(int number, std::size_t width);

/// The decimal number at the front of `text` (sign, digits, one point, an exponent), after leading
/// blanks. 0 if there is none.
double numericPrefix(std::wstring_view text);

/// Rounds half to even. Throws Failure if the result is outside -32768 to 32767.
std::int16_t toInt16(double value);

/// Converts and rounds a text that is a number, except for outer blanks. Throws Failure if it is
/// not a number or is out of range.
std::int16_t toInt16(std::wstring_view text);

/// Converts "True" or "False" in any letter case, or a number, of which only 0 is false. Throws
/// Failure for any other text.
bool toBoolean(std::wstring_view text);

}  // namespace orvane
