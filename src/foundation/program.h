#pragma once

#include <string>

namespace orvane {

/// The fixed title of the program: window caption, and title in every log line.
inline constexpr const wchar_t* kApplicationTitle = L"Orvane成果导出";

/// The folder of the program, which contains `Orvane.dll`, `data.ini`, `Batchs` and `Log`. A path
/// text without a final separator.
const std::wstring& programFolder();

/// Sets the program's folder, which is the folder of the executable by default. For tests and tools
/// that use another station. Must be called before other threads read it.
void setProgramFolder(const std::wstring& folder);

/// Sets the locale of the user, or C.UTF-8 if that has no UTF-8: the texts of the system
/// (`strerror`) and those for the X server (the older title of a window) are in the encoding of the
/// locale. Called once, at the start, because it changes the environment, which Qt reads.
void useUtf8Locale();

/// Makes the process keep freed memory, enough for a few pages, because the system would have to
/// clear the memory of each new page. All threads share it. Called once, at the start.
void keepFreedMemory();

/// The current local time in a format of strftime that gives ASCII only.
std::wstring localTime(const char* format);

/// The time stamp of a log entry, "YYYY-MM-DD HH:MM:SS".
std::wstring timeStamp();

}  // namespace orvane
