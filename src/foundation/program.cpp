#include "foundation/program.h"

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
}

}  // namespace orvane
