#include "foundation/program.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <malloc.h>

#include "foundation/path_text.h"

namespace orvane {
namespace {

std::wstring folderOfExecutable() {
  std::wstring folder = pathText(std::filesystem::read_symlink("/proc/self/exe").parent_path());
  if (folder == L"\\") folder.clear();  // so that folder + "\Log" is right in the root as well
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

void keepFreedMemory() {
  constexpr int kMegabyte = 1 << 20;
  mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);  // the most that glibc allows; an A4 page takes 26
  mallopt(M_TRIM_THRESHOLD, 128 * kMegabyte);
  mallopt(M_ARENA_MAX, 1);
}

std::wstring localTime(const char* format) {
  // Unlike std::time, which lags behind other programs by up to a clock tick.
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  tzset();  // localtime_r need not notice a changed time zone
  localtime_r(&now, &parts);
  char digits[32];
  const std::size_t length = std::strftime(digits, sizeof digits, format, &parts);
  return {digits, digits + length};
}

std::wstring timeStamp() {
  return localTime("%Y-%m-%d %H:%M:%S");
}

}  // namespace orvane
