#include "imaging/containers/container_checks.h"

#include <csignal>
#include <fstream>
#include <random>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/Failure.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using Counters = std::map<std::string, std::int64_t>;

Counters operator-(Counters left, const Counters& right) {
  for (const auto& [name, value] : right) left[name] -= value;
  return left;
}

Counters readCounters() {
  std::ifstream file("/proc/self/io");
  Counters counters;
  std::string name;
  while (file >> name) file >> counters[name];
  return counters;
}

}  // namespace

std::string failureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return {};
}

bool succeedsUnderSizeLimit(std::uint64_t limit, const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit size{limit, limit};
    setrlimit(RLIMIT_FSIZE, &size);
    _exit(failureOf(work).empty() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status)) throw std::runtime_error("the child died");
  return WEXITSTATUS(status) == 0;
}

Counters inputAndOutputOf(const std::function<void()>& work) {
  const Counters first = readCounters();
  const Counters before = readCounters();
  work();
  return (readCounters() - before) - (before - first);  // without what the look itself costs
}

void withDamagedCopies(const std::filesystem::path& path, const std::string& bytes, int count,
                       const std::function<void()>& tryOut) {
  std::mt19937 random(4711);
  for (int i = 0; i < count; ++i) {
    std::string damaged = bytes;
    damaged[random() % damaged.size()] = static_cast<char>(random());
    writeBytes(path, damaged);
    tryOut();
    writeBytes(path, bytes.substr(0, random() % bytes.size()));
    tryOut();
  }
}

}  // namespace orvane::test
