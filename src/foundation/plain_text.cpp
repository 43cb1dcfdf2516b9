#include "foundation/plain_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cwctype>
#include <limits>
#include <locale.h>

#include "foundation/Failure.h"

namespace orvane {
namespace {

template <typename View>
View withoutOuter(View text, View blanks) {
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

struct Reading {
  double value = 0;
  std::size_t length = 0;  // of the number in the text; 0 if there is none
};

// The leading characters of `text` that can belong to a decimal number.
std::string numberCharacters(std::wstring_view text) {
  constexpr std::wstring_view kAllowed = L"0123456789.+-eE";
  const std::wstring_view candidate = text.substr(0, text.find_first_not_of(kAllowed));
  return {candidate.begin(), candidate.end()};
}

// The value of a number that is too large or too small for a double.
double outOfRangeValue(std::string_view number) {
  const bool isTiny = number.find("e-") != number.npos || number.find("E-") != number.npos ||
                      number.front() == '0' || number.front() == '.';
  return isTiny ? 0.0 : std::numeric_limits<double>::infinity();
}

// The number at the front of `text`. std::from_chars, unlike strtod, ignores the locale.
Reading readNumber(std::wstring_view text) {
  const std::string characters = numberCharacters(text);
  const bool hasSign = !characters.empty() && (characters[0] == '-' || characters[0] == '+');
  const std::string_view number = std::string_view(characters).substr(hasSign ? 1 : 0);
  if (number.empty() || number[0] == '-') return {};

  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error == std::errc::invalid_argument) return {};
  if (error == std::errc::result_out_of_range) value = outOfRangeValue(number);
  if (characters[0] == '-') value = -value;
  return {value, static_cast<std::size_t>(end - characters.data())};
}

// The value of a text that is a number, except for outer blanks.
double wholeNumber(std::wstring_view text) {
  const std::wstring_view number = trimmed(text);
  const Reading reading = readNumber(number);
  if (reading.length == 0 || reading.length < number.size()) {
    throw Failure(L"not a number: \"" + std::wstring(text) + L"\"");
  }
  return reading.value;
}

}  // namespace

std::wstring_view trimmed(std::wstring_view text, std::wstring_view blanks) {
  return withoutOuter(text, blanks);
}

std::string_view trimmed(std::string_view text, std::string_view blanks) {
  return withoutOuter(text, blanks);
}

std::wstring asciiLowerCase(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& c : result) {
    if (c >= L'A' && c <= L'Z') c += L'a' - L'A';
  }
  return result;
}

wchar_t upperCase(wchar_t character) {
  static const locale_t letters = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  const auto code = static_cast<wint_t>(character);
  return static_cast<wchar_t>(letters == locale_t{} ? towupper(code) : towupper_l(code, letters));
}

std::wstring upperCase(std::wstring text) {
  for (wchar_t& character : text) character = upperCase(character);
  return text;
}

bool hasShape(std::wstring_view text, std::wstring_view shape) {
  return std::ranges::equal(text, shape, [](wchar_t c, wchar_t expected) {
    return expected == L'0' ? c >= L'0' && c <= L'9' : c == expected;
  });
}

std::wstring inOneLine(std::wstring text) {
  for (wchar_t& c : text) {
    if (c == L'\r' || c == L'\n') c = L' ';
  }
  return text;
}

std::wstring zeroFilled(int number, std::size_t width) {
  const std::wstring digits = std::to_wstring(number);
  return std::wstring(width - std::min(width, digits.size()), L'0') + digits;
}

double numericPrefix(std::wstring_view text) {
  return readNumber(trimmed(text)).value;
}

std::int16_t toInt16(double value) {
  const double rounded = std::nearbyint(value);  // half to even, the default mode
  const bool fits = rounded >= std::numeric_limits<std::int16_t>::min() &&
                    rounded <= std::numeric_limits<std::int16_t>::max();
  if (!fits) throw Failure("number outside -32768 to 32767");
  return static_cast<std::int16_t>(rounded);
}

std::int16_t toInt16(std::wstring_view text) {
  return toInt16(wholeNumber(text));
}

bool toBoolean(std::wstring_view text) {
  const std::wstring word = asciiLowerCase(trimmed(text));
  if (word == L"true") return true;
  if (word == L"false") return false;
  return wholeNumber(word) != 0;
}

}  // namespace orvane
