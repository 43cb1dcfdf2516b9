#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvane::test {

/// Returns as soon as the condition holds. Throws if it does not within 30 seconds.
inline void waitFor(const std::string& what, const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("timed out waiting for " + what);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

/// A child process. It is terminated by the destructor, and killed if this process ends.
class Process {
 public:
  /// Starts a shell command.
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
    send(SIGCONT);  // it may be stopped
    waitpid(id_, nullptr, 0);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void send(int signal) const { kill(id_, signal); }

  /// Calls `start`, lets the main thread run from system call to system call until the condition
  /// holds, and stops the process (SIGSTOP) there: never too late, however busy the machine is.
  void stopAt(const std::function<bool()>& condition, const std::function<void()>& start) const {
    constexpr int kSystemCall = SIGTRAP | 0x80;
    ptrace(PTRACE_SEIZE, id_, nullptr, PTRACE_O_TRACESYSGOOD);
    ptrace(PTRACE_INTERRUPT, id_, nullptr, nullptr);
    start();
    for (int status = 0;;) {
      if (waitpid(id_, &status, 0) != id_ || !WIFSTOPPED(status)) {
        throw std::runtime_error("the process ended before it could be stopped");
      }
      if (condition()) break;
      const bool isSignal = status >> 16 == 0 && WSTOPSIG(status) != kSystemCall;
      ptrace(PTRACE_SYSCALL, id_, nullptr, isSignal ? WSTOPSIG(status) : 0);
    }
    send(SIGSTOP);
    ptrace(PTRACE_DETACH, id_, nullptr, nullptr);
  }

  /// The exit code, or 128 + signal, if the process has ended.
  std::optional<int> exitCode() {
    int status = 0;
    if (!exitCode_ && waitpid(id_, &status, WNOHANG) == id_) {
      exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return exitCode_;
  }

  /// Waits for the end of the process and returns its exit code.
  int exitCodeAtEnd() {
    waitFor("the end of a process", [this] { return exitCode().has_value(); });
    return *exitCode_;
  }

 private:
  pid_t id_;
  std::optional<int> exitCode_;
};

}  // namespace orvane::test
