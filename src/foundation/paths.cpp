#include "foundation/paths.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"

namespace orvane {

// The native form of path texts.

namespace {

constexpr wchar_t kEscapeBase = 0xDC00;

wchar_t escaped(unsigned char byte) {
  return static_cast<wchar_t>(kEscapeBase + byte);
}

// Only the bytes that `entryText` escapes, so that no escape becomes a separator or a NUL.
bool isEscape(wchar_t character) {
  return character == escaped('\\') ||
         (character >= kEscapeBase + 0x80 && character <= kEscapeBase + 0xFF);
}

}  // namespace

std::filesystem::path nativePath(std::wstring_view pathText) {
  std::string native;
  std::size_t plainBegin = 0;
  const auto endPlain = [&](std::size_t end) {
    native += toUtf8(pathText.substr(plainBegin, end - plainBegin));
    plainBegin = end + 1;
  };
  for (std::size_t i = 0; i < pathText.size(); ++i) {
    const wchar_t character = pathText[i];
    if (character == L'\0') throw systemFailure(EINVAL, pathText);
    if (character == L'\\') {
      endPlain(i);
      native += '/';
    } else if (isEscape(character)) {
      endPlain(i);
      native += static_cast<char>(character - kEscapeBase);
    } else if (!isUnicodeScalar(character)) {
      throw systemFailure(EILSEQ, pathText);
    }
  }
  endPlain(pathText.size());
  return native;
}

std::wstring entryText(std::string_view entryName) {
  std::wstring text = fromUtf8(entryName, escaped);
  for (wchar_t& character : text) {
    if (character == L'\\') character = escaped('\\');
  }
  return text;
}

std::wstring pathText(const std::filesystem::path& native) {
  std::wstring text = entryText(native.native());
  for (wchar_t& character : text) {
    if (character == L'/') character = L'\\';
  }
  return text;
}

// Names in any letter case, and links.

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
  const fs::path path = nativePath(pathText).lexically_normal();
  return path.has_filename() ? path : path.parent_path();
}

constexpr int kMaxLinks = 40;  // the system's own limit

bool isLink(const fs::path& place, const std::wstring& path) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(place, error);
  if (status.type() == fs::file_type::none) throw systemFailure(error.value(), path);
  return status.type() == fs::file_type::symlink;
}

// A folder that does not exist has only its name.
std::optional<FileIdentity> identityAt(const fs::path& folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) return std::nullopt;
  return identityOf(status);
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

fs::path resolvedPlace(const std::wstring& path) {
  // If the working directory was removed, `current_path` fails.
  const fs::path native = nativePath(existingPath(path));
  const fs::path whole = native.is_absolute() ? native : fs::current_path() / native;
  std::deque<fs::path> rest(whole.begin(), whole.end());
  fs::path place = "/";
  int links = 0;
  while (!rest.empty()) {
    const fs::path part = rest.front();
    rest.pop_front();
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      place = place.parent_path();
      continue;
    }
    place /= part;  // an absolute `part` replaces `place`
    if (!isLink(place, path)) continue;
    if (++links > kMaxLinks) throw systemFailure(ELOOP, path);
    const fs::path target = fs::read_symlink(place);
    place = place.parent_path();
    rest.insert(rest.begin(), target.begin(), target.end());
  }
  return place;
}

bool isWithin(const fs::path& place, const std::vector<fs::path>& folders) {
  std::vector<std::optional<FileIdentity>> identities(folders.size());
  std::transform(folders.begin(), folders.end(), identities.begin(), identityAt);
  for (fs::path level = place;; level = level.parent_path()) {
    const std::optional<FileIdentity> identity = identityAt(level);
    for (std::size_t i = 0; i < folders.size(); ++i) {
      if (level == folders[i] || (identity && identity == identities[i])) return true;
    }
    if (level == level.root_path()) return false;
  }
}

}  // namespace orvane
