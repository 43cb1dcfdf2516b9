#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvane::test {

/// Returns as soon as the condition holds; throws when it does not within half a minute.
inline void waitFor(const std::string& what, const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("waited in vain for " + what);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

/// A child process. It is ended when this object goes, and dies with this process.
class Process {
 public:
  /// Starts a command of the shell.
  explicit Process(const std::string& command) : id_(fork()) {
    if (id_ < 0) throw std::runtime_error("fork failed");
    if (id_ > 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    _exit(127);
  }
  ~Process() {
    if (exitCode()) return;
    send(SIGTERM);
    send(SIGCONT);  // it may be halted
    waitpid(id_, nullptr, 0);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void send(int signal) const { kill(id_, signal); }

  /// The exit code once it has ended, 128 + signal when a signal ended it.
  std::optional<int> exitCode() {
    int status = 0;
    if (!exitCode_ && waitpid(id_, &status, WNOHANG) == id_) {
      exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return exitCode_;
  }

  /// Waits for the end.
  int exitCodeAtEnd() {
    waitFor("the end of a process", [this] { return exitCode().has_value(); });
    return *exitCode_;
  }

 private:
  pid_t id_;
  std::optional<int> exitCode_;
};

}  // namespace orvane::test
