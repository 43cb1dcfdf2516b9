#pragma once

#include <filesystem>
#include <string>

#include "support/Process.h"

/// The files that this process has open.
namespace orvane::test {

/// True if a file whose path ends in `name` is open.
inline bool isOpen(const std::string& name) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry, gone).string().ends_with(name)) return true;
  }
  return false;
}

/// Waits until another thread has the file open.
inline void waitUntilOpen(const std::string& name) {
  waitFor("a thread that has opened " + name, [&] { return isOpen(name); });
}

}  // namespace orvane::test
