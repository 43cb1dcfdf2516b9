#include "batchdb/top_clause.h"

#include <algorithm>
#include <string_view>

#include "foundation/letter_case.h"

namespace orvane {
namespace {

constexpr std::wstring_view kBlanks = L" \t\r\n";

// Takes the next word, up to a blank, off the front of `text`.
std::wstring_view takeWord(std::wstring_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const std::wstring_view word = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(word.size());
  return word;
}

bool isNumber(std::wstring_view word) {
  return !word.empty() && word.find_first_not_of(L"0123456789") == word.npos;
}

}  // namespace

std::wstring withLimitForTop(const std::wstring& sql) {
  std::wstring_view rest = sql;
  const std::wstring_view select = takeWord(rest);
  if (asciiLowerCase(select) != L"select" || asciiLowerCase(takeWord(rest)) != L"top") return sql;
  const std::wstring_view count = takeWord(rest);
  if (!isNumber(count)) return sql;

  rest = rest.substr(0, rest.find_last_not_of(L" \t\r\n;") + 1);
  return std::wstring(select).append(rest).append(L" limit ").append(count);
}

}  // namespace orvane
