#pragma once

#include <string>

namespace orvane {

/// Appends an entry to `sLogFile` or, if it is empty, to today's log. Throws nothing: a failure of
/// the log cannot be reported anywhere else.
void writeLogEntry(const std::wstring& sMessage, const std::wstring& sSource,
                   const std::wstring& sLogFile = {});

}  // namespace orvane
