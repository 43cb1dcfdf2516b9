#pragma once

#include <string>

namespace orvane {

/// The fixed title of the program: window caption, and title in every log line.
inline constexpr const wchar_t* kApplicationTitle = L"Orvane成果导出";

/// The folder of the program, as a path text without a separator at the end. It holds `Orvane.dll`,
/// `data.ini`, `Batchs` and `Log`.
const std::wstring& programFolder();

/// Replaces the folder of the running executable as the program's folder. For tests, which lay out
/// a station of their own, and before any other thread asks for it.
void setProgramFolder(const std::wstring& folder);

/// Makes the process keep the memory that it frees, up to a few pages' worth: the next page needs
/// as much again, and the system would have to clear it each time. All threads share what is kept.
/// Called once, at the start.
void keepFreedMemory();

/// The local date and time now, in a format of strftime that has digits only.
std::wstring localTime(const char* format);

/// The time stamp of a log entry, "YYYY-MM-DD HH:MM:SS".
std::wstring timeStamp();

}  // namespace orvane
