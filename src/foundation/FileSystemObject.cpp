#include "foundation/FileSystemObject.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/existing_path.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

bool leadsNowhere(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

// Nothing when the path leads nowhere.
std::optional<struct stat> statusOf(const std::wstring& path) {
  struct stat status {};
  if (stat(nativePath(path).c_str(), &status) == 0) return status;
  if (leadsNowhere(errno)) return std::nullopt;
  throw systemFailure(errno);
}

using Listing = std::unique_ptr<DIR, int (*)(DIR*)>;

bool mayBeFolder(const Listing& listing, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) return entry.d_type == DT_DIR;
  struct stat status {};
  return fstatat(dirfd(listing.get()), entry.d_name, &status, 0) != 0 || S_ISDIR(status.st_mode);
}

}  // namespace

bool FileSystemObject::FolderExists(const std::wstring& path) {
  const auto status = statusOf(path);
  return status && S_ISDIR(status->st_mode);
}

bool FileSystemObject::FileExists(const std::wstring& path) {
  const auto status = statusOf(path);
  return status && S_ISREG(status->st_mode);
}

bool FileSystemObject::IsSamePlace(const std::wstring& path, const std::wstring& otherPath) {
  const std::wstring found = existingPath(path), otherFound = existingPath(otherPath);
  const auto one = statusOf(found), other = statusOf(otherFound);
  if (!one || !other || one->st_dev != other->st_dev) return false;
  return one->st_ino == other->st_ino || isOneEntryInAnyCase(found, otherFound);
}

void FileSystemObject::CreateFolder(const std::wstring& path) {
  if (mkdir(nativePath(path).c_str(), 0777) != 0) throw systemFailure(errno, path);
}

void FileSystemObject::DeleteFile(const std::wstring& path) {
  // Whether a file may go is decided by its folder's permissions, never by its own.
  if (unlink(nativePath(path).c_str()) != 0) throw systemFailure(errno, path);
}

std::vector<std::wstring> FileSystemObject::SubFolders(const std::wstring& path) {
  const Listing listing(opendir(nativePath(existingPath(path)).c_str()), closedir);
  if (!listing) throw systemFailure(errno, path);
  std::vector<std::wstring> names;
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(listing.get());
    if (entry == nullptr && errno != 0) throw systemFailure(errno, path);
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && mayBeFolder(listing, *entry)) {
      names.push_back(entryText(name));
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace orvane
