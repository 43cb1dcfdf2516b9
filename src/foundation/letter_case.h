#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// `text` with A to Z in lower case; all other letters stay, whatever the locale.
inline std::wstring asciiLowerCase(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& c : result) {
    if (c >= L'A' && c <= L'Z') c += L'a' - L'A';
  }
  return result;
}

/// The capital of a letter of any script, whatever the locale; any other character as it is.
wchar_t upperCase(wchar_t character);

}  // namespace orvane
