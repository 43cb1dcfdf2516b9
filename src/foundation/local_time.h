#pragma once

#include <string>

namespace orvane {

/// The local date and time now, in a mask of strftime that asks for digits only.
std::wstring localTime(const char* mask);

/// The time stamp of a log entry, "YYYY-MM-DD HH:MM:SS".
std::wstring timeStamp();

}  // namespace orvane
