#pragma once

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/resource.h>

#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {

/// One file in a folder of its own.
struct FileTest : testing::Test {
  TempStation station;
  std::filesystem::path file = station.native("out");
  std::wstring path = station.path(L"out");

  std::string bytes() const { return readBytes(file); }
  /// The output of commands that must succeed in the folder.
  std::string judge(const std::string& commands) const {
    return outputOf("cd " + quoted(station.native()) + " && " + commands);
  }
};

/// For the life of this object no file grows past `limit` bytes, as on a full disk.
class FullDisk {
 public:
  explicit FullDisk(std::uint64_t limit) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit size{limit, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &size);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
};

/// How many bytes and calls this process has read and written, by the kernel's own count.
inline std::map<std::string, std::int64_t> inputAndOutput() {
  std::ifstream file("/proc/self/io");
  std::map<std::string, std::int64_t> counters;
  std::string name;
  while (file >> name) file >> counters[name];
  return counters;
}

}  // namespace orvane::test
