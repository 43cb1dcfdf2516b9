#pragma once

#include <string>

namespace orvane {

/// A query that begins with "select top N", in any letter case, in the form that SQLite knows:
/// without the clause and with "limit N" at its end. Any other statement comes back as it is.
std::wstring withLimitForTop(const std::wstring& sql);

}  // namespace orvane
