#pragma once

#include <iostream>
#include <string>

#include "foundation/text_encoding.h"

namespace orvane::station {

/// Prints a line on standard output.
inline void print(const std::wstring& line) {
  std::cout << toUtf8(line) << '\n';
}

/// A text as one column of a line: a line break or tab in it would look like the next line or
/// column.
inline std::wstring onOneLine(std::wstring text) {
  for (wchar_t& letter : text) {
    if (letter == L'\r' || letter == L'\n' || letter == L'\t') letter = L' ';
  }
  return text;
}

}  // namespace orvane::station
