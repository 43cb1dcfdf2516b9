#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The files of the folder `Log` in the program's folder: a log for each day, `YYYYMMDD.log` in
/// code page 936, and a report of each run, `YYYYMMDD-HHMMSS.txt` in UTF-8. Paths are path texts.
namespace orvane {

std::wstring logFolder();

/// Today's log, which need not exist.
std::wstring logFileOfToday();

/// The logs, newest first. None if there is no folder. Throws Failure if it cannot be listed.
std::vector<std::wstring> dailyLogs();

/// The reports, as `dailyLogs`.
std::vector<std::wstring> runReports();

/// The last lines of a log or a report, at most `most` bytes of the file, with `\n` as line end and
/// without empty lines. Throws Failure if it cannot be read.
std::wstring readLogFile(const std::wstring& file, std::size_t most);

}  // namespace orvane
