#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "support/command.h"

namespace orvane::test {

/// The bytes of a file; empty if it does not exist.
inline std::string readBytes(const std::filesystem::path& file) {
  std::ostringstream bytes;
  bytes << std::ifstream(file, std::ios::binary).rdbuf();
  return std::move(bytes).str();
}

/// Writes a file and creates the folders above it.
inline void writeBytes(const std::filesystem::path& file, const std::string& bytes) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  if (!stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

/// A temporary folder that is the program's folder while this object exists.
class TempStation {
 public:
  TempStation() : oldFolder_(programFolder()) {
    std::string name = (std::filesystem::temp_directory_path() / "station-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    native_ = name;
    setProgramFolder(pathText(native_));
  }
  ~TempStation() {
    setProgramFolder(oldFolder_);
    std::error_code ignored;
    std::filesystem::remove_all(native_, ignored);
  }
  TempStation(const TempStation&) = delete;
  TempStation& operator=(const TempStation&) = delete;

  /// The native path of `relative`, whose separator is `/`.
  std::filesystem::path native(const std::string& relative = {}) const {
    return relative.empty() ? native_ : native_ / relative;
  }

  /// The path text of `relative`, whose separator is `\`; it must not begin with one.
  std::wstring path(const std::wstring& relative = {}) const {
    return pathText(native_) + (relative.empty() ? L"" : L"\\" + relative);
  }

  void write(const std::string& relative, const std::string& bytes) const {
    writeBytes(native(relative), bytes);
  }
  std::string read(const std::string& relative) const { return readBytes(native(relative)); }

  /// Runs a shell command in this folder and returns its output. The command must succeed.
  std::string shell(const std::string& command) const {
    return outputOf("cd " + quoted(native_) + " && { " + command + "\n}");
  }

  /// The log entries since the last call, one per line: "<source>:<message>".
  std::string takeLog() const {
    const std::string program = "Orvane成果导出 - ";
    std::string log;
    for (const std::wstring& entry : logEntries()) {
      const std::string line = toUtf8(entry);
      log += (line.starts_with(program) ? line.substr(program.size()) : line) + "\n";
    }
    for (const std::filesystem::path& file : logFiles()) std::filesystem::remove(file);
    return log;
  }

  /// The decoded entries of all logs, without time stamps and without the empty line after each:
  /// "Orvane成果导出 - <source>:<message>".
  std::vector<std::wstring> logEntries() const {
    constexpr std::size_t kStampLength = 20;  // "YYYY-MM-DD HH:MM:SS "
    std::vector<std::wstring> entries;
    for (const std::filesystem::path& file : logFiles()) {
      std::wstring text = fromAnsi(readBytes(file));
      for (std::size_t end = text.find(L"\r\n"); end != text.npos; end = text.find(L"\r\n")) {
        if (end > kStampLength) entries.push_back(text.substr(kStampLength, end - kStampLength));
        text.erase(0, end + 2);
      }
    }
    return entries;
  }

  /// The native paths of the logs, oldest first.
  std::vector<std::filesystem::path> logFiles() const {
    std::vector<std::filesystem::path> files;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(native("Log"), ignored)) {
      if (entry.path().extension() == ".log") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

 private:
  std::wstring oldFolder_;
  std::filesystem::path native_;
};

}  // namespace orvane::test
