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

// The kernel's own count. A look costs a few reads of its own, the same ones each time.
SystemWork workSoFar() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::uint64_t value = 0;
  SystemWork work;
  while (counters >> name >> value) {
    if (name == "rchar:") work.bytesRead = value;
    if (name == "wchar:") work.bytesWritten = value;
    if (name == "syscr:" || name == "syscw:") work.calls += value;
  }
  return work;
}

SystemWork difference(const SystemWork& after, const SystemWork& before) {
  return {after.bytesRead - before.bytesRead, after.bytesWritten - before.bytesWritten,
          after.calls - before.calls};
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

SystemWork workOf(const std::function<void()>& work) {
  const SystemWork first = workSoFar();
  const SystemWork before = workSoFar();
  work();
  return difference(difference(workSoFar(), before), difference(before, first));
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
