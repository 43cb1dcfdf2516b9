#include "foundation/paths.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>
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

std::string nativePath(std::wstring_view pathText) {
  std::string native;
  native.reserve(pathText.size());
  for (const wchar_t character : pathText) {
    if (character == L'\0') throw systemFailure(EINVAL, pathText);
    if (character == L'\\') {
      native += '/';
    } else if (character > 0 && character < 0x80) {
      native += static_cast<char>(character);
    } else if (isEscape(character)) {
      native += static_cast<char>(character - kEscapeBase);
    } else if (isUnicodeScalar(character)) {
      native += toUtf8({&character, 1});
    } else {
      throw systemFailure(EILSEQ, pathText);
    }
  }
  return native;
}

std::wstring nativeText(std::wstring_view pathText) {
  return fromUtf8(std::filesystem::path(nativePath(pathText)).lexically_normal().native());
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

// Places.

namespace {

constexpr int kMaxLinks = 40;  // the system's own limit

// Removes the first name of a native path with its separator.
std::string takeName(std::string& path) {
  const std::size_t end = std::min(path.find('/'), path.size());
  std::string name = path.substr(0, end);
  path.erase(0, end + 1);
  return name;
}

// The working directory may have been removed.
fs::path currentFolder(const std::wstring& path) {
  std::error_code error;
  fs::path folder = fs::current_path(error);
  if (error) throw systemFailure(error.value(), path);
  return folder;
}

std::string targetOf(const std::string& link, const std::wstring& path) {
  std::error_code error;
  std::string target = fs::read_symlink(link, error);
  if (error) throw systemFailure(error.value(), path);
  return target;
}

}  // namespace

/// Resolves the links in paths, and examines each name only once.
class LinkResolver {
 public:
  Place placeOf(const std::wstring& path) {
    const Place place = placeAsSpelled(path);
    return place.exists() ? place : placeAsSpelled(existingPath(path));
  }

 private:
  struct Entry {
    std::optional<FileIdentity> identity{};
    bool isLink = false;
  };

  Place placeAsSpelled(const std::wstring& path) {
    std::string rest = nativePath(path);
    if (!rest.starts_with('/')) rest = currentFolder(path) / rest;
    Place place = root(path);
    for (int links = 0; !rest.empty();) {
      const std::string name = takeName(rest);
      if (name.empty() || name == ".") continue;
      if (name == "..") {
        leave(place);
        continue;
      }
      place.path_ += '/' + name;
      const Entry entry = examined(place.path_, path);
      place.levels_.push_back(entry.identity);
      if (!entry.isLink) continue;
      if (++links > kMaxLinks) throw systemFailure(ELOOP, path);
      const std::string target = targetOf(place.path_, path);
      rest = target + '/' + rest;
      if (target.starts_with('/')) {
        place = root(path);
      } else {
        leave(place);
      }
    }
    return place;
  }

  Place root(const std::wstring& path) {
    Place place;
    place.levels_.front() = examined("/", path).identity;
    return place;
  }

  static void leave(Place& place) {
    if (place.path_.empty()) return;
    place.path_.erase(place.path_.rfind('/'));
    place.levels_.pop_back();
  }

  const Entry& examined(const std::string& native, const std::wstring& path) {
    const auto [at, isNew] = entries_.try_emplace(native);
    struct stat status {};
    if (isNew && lstat(native.c_str(), &status) == 0) {
      at->second = {identityOf(status), S_ISLNK(status.st_mode)};
    } else if (isNew && errno != ENOENT && errno != ENOTDIR) {
      throw systemFailure(errno, path);
    }
    return at->second;
  }

  std::unordered_map<std::string, Entry> entries_;
};

bool Place::isWithin(const Place& folder) const {
  const bool isNamedSo = path_.starts_with(folder.path_) &&
                         (path_.size() == folder.path_.size() || path_[folder.path_.size()] == '/');
  const std::optional<FileIdentity>& identity = folder.levels_.back();
  return isNamedSo ||
         (identity && std::find(levels_.begin(), levels_.end(), identity) != levels_.end());
}

Place resolvedPlace(const std::wstring& path) {
  return LinkResolver().placeOf(path);
}

std::vector<Place> resolvedPlaces(const std::vector<std::wstring>& paths) {
  LinkResolver resolver;
  std::vector<Place> places;
  places.reserve(paths.size());
  for (const std::wstring& path : paths) places.push_back(resolver.placeOf(path));
  return places;
}

}  // namespace orvane
