#pragma once

#include <csignal>
#include <cstdint>
#include <sys/resource.h>

namespace orvane::test {

/// While it exists, no file can grow beyond `limit` bytes, as on a full disk.
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

}  // namespace orvane::test
