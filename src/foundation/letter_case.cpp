#include "foundation/letter_case.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

constexpr const wchar_t* kSeparators = L"\\/";

bool isInScanTree(const std::wstring& path) {
  const std::wstring root = programFolder() + L"\\Batchs";
  return path.starts_with(root) && (path.size() == root.size() ||
                                    path.find_first_of(kSeparators, root.size()) == root.size());
}

// A path that cannot be examined counts as existing, because its use reports the reason.
bool isThere(const std::wstring& path) {
  struct stat status {};
  return lstat(nativePath(path).c_str(), &status) == 0 || errno != ENOENT;
}

bool equalInAnyCase(std::wstring_view name, std::wstring_view otherName) {
  return std::equal(name.begin(), name.end(), otherName.begin(), otherName.end(),
                    [](wchar_t a, wchar_t b) { return a == b || upperCase(a) == upperCase(b); });
}

// The spelling of `name` that `folder` (which ends in a separator) lists, if any.
std::optional<std::wstring> listedName(const std::wstring& folder, const std::wstring& name) {
  std::optional<std::wstring> found;
  std::error_code error;
  fs::directory_iterator entry(nativePath(folder), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::wstring candidate = entryText(entry->path().filename().native());
    if (candidate == name) return name;
    if (equalInAnyCase(candidate, name) && (!found || candidate < *found)) {
      found = std::move(candidate);
    }
  }
  if (error) throw systemFailure(error.value(), folder);
  return found;
}

// Without dots, doubled separators and a final separator.
fs::path plain(const std::wstring& pathText) {
  const fs::path path = fs::path(nativePath(pathText)).lexically_normal();
  return path.has_filename() ? path : path.parent_path();
}

}  // namespace

std::optional<std::wstring> entryInAnyCase(const std::wstring& folder, const std::wstring& name) {
  return isThere(folder + name) ? name : listedName(folder, name);
}

std::wstring existingPath(const std::wstring& pathText) {
  if (!isInScanTree(pathText) || isThere(pathText)) return pathText;
  std::wstring found = programFolder();
  for (std::size_t begin = found.size(); begin < pathText.size();) {
    const std::size_t nameBegin = pathText.find_first_not_of(kSeparators, begin);
    const std::size_t nameEnd = pathText.find_first_of(kSeparators, nameBegin);
    found += pathText.substr(begin, nameBegin - begin);
    if (nameBegin == pathText.npos) break;

    const std::wstring name = pathText.substr(nameBegin, nameEnd - nameBegin);
    if (name == L"..") return pathText;
    try {
      const std::optional<std::wstring> entry = entryInAnyCase(found, name);
      if (!entry) return pathText;
      found += *entry;
    } catch (const Failure&) {
      return pathText;
    }
    begin = std::min(nameEnd, pathText.size());
  }
  return found;
}

bool isOneEntryInAnyCase(const std::wstring& path, const std::wstring& otherPath) {
  const fs::path one = plain(path), other = plain(otherPath);
  if (!equalInAnyCase(pathText(one), pathText(other))) return false;
  std::wstring folder;
  for (auto a = one.begin(), b = other.begin(); a != one.end() && b != other.end(); ++a, ++b) {
    const std::wstring name = pathText(*a), otherName = pathText(*b);
    if (name != otherName) {
      const std::optional<std::wstring> listed = listedName(folder, name);
      if (!listed || listed != listedName(folder, otherName)) return false;
    }
    folder += name == L"\\" ? name : name + L"\\";
  }
  return true;
}

}  // namespace orvane
