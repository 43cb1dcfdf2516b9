#pragma once

#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace orvane::test {

/// Gives the process the rights of an ordinary user while it exists, so that permissions matter
/// even if the tests run as root.
class AsOrdinaryUser {
 public:
  AsOrdinaryUser() {
    if (geteuid() == 0 && seteuid(65534) != 0) throw std::runtime_error("seteuid failed");
  }
  ~AsOrdinaryUser() {
    if (getuid() == 0 && seteuid(0) != 0) std::abort();
  }
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;
};

}  // namespace orvane::test
