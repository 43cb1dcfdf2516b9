#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

/// Runs the tools that judge the output of the program.
namespace orvane::test {

struct CommandResult {
  int exitCode = -1;   ///< 128 + signal if a signal ended the command
  std::string output;  ///< standard output and standard error, interleaved
};

/// Runs a shell command to its end.
inline CommandResult runCommand(const std::string& command) {
  FILE* pipe = popen(("( " + command + " ) 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("popen failed: " + command);
  CommandResult result;
  std::array<char, 4096> buffer;
  while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe)) {
    result.output.append(buffer.data(), count);
  }
  const int status = pclose(pipe);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

/// Runs a shell command, which must succeed, and returns its output.
inline std::string outputOf(const std::string& command) {
  const CommandResult result = runCommand(command);
  if (result.exitCode != 0) throw std::runtime_error(command + "\n" + result.output);
  return result.output;
}

/// Quotes `text` as one word for the shell.
inline std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

inline std::string quoted(const std::filesystem::path& path) {
  return quoted(path.native());
}

}  // namespace orvane::test
