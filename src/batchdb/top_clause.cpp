#include "batchdb/top_clause.h"

#include <regex>

namespace orvane {

std::wstring withLimitForTop(const std::wstring& sql) {
  static const std::wregex topQuery(LR"(^\s*(select)\s+top\s+([0-9]+)\s)",
                                    std::regex::icase | std::regex::optimize);
  std::wsmatch match;
  if (!std::regex_search(sql, match, topQuery)) return sql;
  std::wstring rest = match.suffix();
  rest.erase(rest.find_last_not_of(L" \t\r\n;") + 1);
  return match.str(1) + L" " + rest + L" limit " + match.str(2);
}

}  // namespace orvane
