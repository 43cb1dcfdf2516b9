#include "foundation/program.h"

#include <chrono>
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <langinfo.h>
#include <malloc.h>
#include <string_view>

#include "foundation/paths.h"

namespace orvane {
namespace {

std::wstring folderOfExecutable() {
  std::wstring folder = pathText(std::filesystem::read_symlink("/proc/self/exe").parent_path());
  if (folder == L"\\") folder.clear();  // "" + "\Log" is a path in the root folder
  return folder;
}

std::wstring& storedFolder() {
  static std::wstring folder = folderOfExecutable();
  return folder;
}

}  // namespace

const std::wstring& programFolder() {
  return storedFolder();
}

void setProgramFolder(const std::wstring& folder) {
  storedFolder() = folder;
}

void useUtf8Locale() {
  std::setlocale(LC_ALL, "");
  if (std::string_view(nl_langinfo(CODESET)) == "UTF-8") return;
  setenv("LC_ALL", "C.UTF-8", 1);
  std::setlocale(LC_ALL, "");
}

void keepFreedMemory() {
  constexpr int kMegabyte = 1 << 20;
  mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);  // the maximum of glibc; an A4 page needs 26
  mallopt(M_TRIM_THRESHOLD, 128 * kMegabyte);
  mallopt(M_ARENA_MAX, 1);
}

std::wstring localTime(const char* format) {
  // std::time may still return the tick before the time that other programs read.
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  tzset();  // localtime_r may not notice a changed time zone
  localtime_r(&now, &parts);
  char digits[32];
  const std::size_t length = std::strftime(digits, sizeof digits, format, &parts);
  return {digits, digits + length};
}

std::wstring timeStamp() {
  return localTime("%Y-%m-%d %H:%M:%S");
}

}  // namespace orvane
