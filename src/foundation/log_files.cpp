#include "foundation/log_files.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

bool isDay(std::wstring_view text) {
  return hasShape(text, L"00000000");
}

// The second report of a second ends in "-2".
bool isDayAndTime(std::wstring_view text) {
  constexpr std::wstring_view kShape = L"00000000-000000";
  const std::wstring_view number = text.substr(std::min(text.size(), kShape.size()));
  return hasShape(text.substr(0, kShape.size()), kShape) &&
         (number.empty() ||
          (number.size() > 1 && hasShape(number, L"-" + std::wstring(number.size() - 1, L'0'))));
}

std::vector<std::wstring> filesNamed(bool (*isName)(std::wstring_view),
                                     std::wstring_view extension) {
  std::vector<std::wstring> names;
  std::error_code error;
  for (fs::directory_iterator entry(nativePath(logFolder()), error), end; !error && entry != end;
       entry.increment(error)) {
    std::wstring name = entryText(entry->path().filename().native());
    if (!name.ends_with(extension)) continue;
    name.resize(name.size() - extension.size());
    if (isName(name)) names.push_back(std::move(name));
  }
  if (error && error != std::errc::no_such_file_or_directory) {
    throw systemFailure(error.value(), logFolder());
  }
  std::ranges::sort(names, std::greater());
  for (std::wstring& name : names) name = logFolder() + L"\\" + name + std::wstring(extension);
  return names;
}

// Without the rest of a line that begins before them.
std::string lastBytes(const FileDescriptor& file, std::size_t most) {
  const std::uint64_t size = file.state().size;
  std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(size, most)), '\0');
  const std::uint64_t start = size - bytes.size();
  bytes.resize(file.readAt(start, {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()}));
  if (start > 0) bytes.erase(0, bytes.find('\n') + 1);
  return bytes;
}

}  // namespace

std::wstring logFolder() {
  return programFolder() + L"\\Log";
}

std::wstring logFileOfToday() {
  return logFolder() + L"\\" + localTime("%Y%m%d") + L".log";
}

std::vector<std::wstring> dailyLogs() {
  return filesNamed(isDay, L".log");
}

std::vector<std::wstring> runReports() {
  return filesNamed(isDayAndTime, L".txt");
}

// Reads only the end of the file, which can have any size. In both encodings the byte 0x0A is
// always a line end.
std::wstring readLogFile(const std::wstring& file, std::size_t most) {
  const FileDescriptor opened = FileDescriptor::openRegularFile(file);
  const std::string bytes = lastBytes(opened, most);

  std::wstring text;
  for (const wchar_t c : file.ends_with(L".txt") ? fromUtf8(bytes) : fromAnsi(bytes)) {
    if (c == L'\r' || (c == L'\n' && (text.empty() || text.ends_with(L'\n')))) continue;
    text += c;
  }
  return text;
}

}  // namespace orvane
