#include "end_to_end/Process.h"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvane::test {

Process::Process(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  id_ = fork();
  if (id_ < 0) throw std::runtime_error("fork failed");
  if (id_ > 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

Process::~Process() {
  if (exitCode()) return;
  send(SIGTERM);
  send(SIGCONT);
  try {
    waitFor(
        "the end of a process", [&] { return exitCode().has_value(); }, 5);
  } catch (const std::exception&) {
    send(SIGKILL);
    waitpid(id_, nullptr, 0);
  }
}

void Process::send(int signal) const {
  kill(id_, signal);
}

std::optional<int> Process::exitCode() {
  int status = 0;
  if (!exitCode_ && waitpid(id_, &status, WNOHANG) == id_) {
    exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return exitCode_;
}

void waitFor(const std::string& what, const std::function<bool()>& condition, int seconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("waited in vain for " + what);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

}  // namespace orvane::test
