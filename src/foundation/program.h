#pragma once

#include <string>

namespace orvane {

/// The fixed title of the program: window caption, and title in every log line.
inline constexpr const wchar_t* kApplicationTitle = L"Orvane成果导出";

/// The folder that holds the program, as path text without a separator at the end. `Orvane.dll`,
/// `data.ini`, `Batchs` and `Log` lie in it.
const std::wstring& programFolder();

/// Makes `folder` the program's folder in place of the one that holds the running executable.
/// For tests, which lay out a station of their own.
void setProgramFolder(const std::wstring& folder);

/// Makes the process keep the memory that it frees, up to a few pages' worth: the next page takes
/// as much again, and each time the system would have to clear it. Called once, at the start.
void keepFreedMemory();

}  // namespace orvane
