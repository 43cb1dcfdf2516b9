#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orvane::test {

/// A child process. It is ended when this object goes, and dies with this process.
class Process {
 public:
  explicit Process(const std::vector<std::string>& words);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  void send(int signal) const;

  /// The exit code once it has ended, 128 + signal when a signal ended it.
  std::optional<int> exitCode();

 private:
  pid_t id_;
  std::optional<int> exitCode_;
};

/// Returns as soon as the condition holds; throws when it does not within the given time.
void waitFor(const std::string& what, const std::function<bool()>& condition, int seconds = 30);

}  // namespace orvane::test
