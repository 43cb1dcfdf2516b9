// DeleteFolder. Every step goes through the descriptor of the folder above it and never through a
// path, so no link that is put in place meanwhile can lead the removal out of the folder.

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/FileSystemObject.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

using Listing = std::unique_ptr<DIR, int (*)(DIR*)>;

// Opens a folder, never a link to one, and gives its owner the right to list and change it: a
// folder that is read-only must go as well.
Listing openForRemoval(int parent, const char* name, const std::wstring& path) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  int folder = openat(parent, name, kFlags);
  if (folder < 0 && errno == EACCES && fchmodat(parent, name, S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0) {
    folder = openat(parent, name, kFlags);
  }
  if (folder < 0) throw systemFailure(errno, path);

  Listing listing(fdopendir(folder), closedir);
  if (!listing) {
    const int error = errno;
    close(folder);
    throw systemFailure(error, path);
  }
  struct stat status {};
  if (fstat(folder, &status) == 0 && (status.st_mode & S_IRWXU) != S_IRWXU) {
    fchmod(folder, status.st_mode | S_IRWXU);  // a folder of another owner shows at its first entry
  }
  return listing;
}

void removeTree(int parent, const char* name, const std::wstring& path);

void removeEntry(int folder, const char* name, const std::wstring& path) {
  if (unlinkat(folder, name, 0) == 0) return;
  if (errno != EISDIR) throw systemFailure(errno, path);
  removeTree(folder, name, path);
}

void removeTree(int parent, const char* name, const std::wstring& path) {
  const Listing listing = openForRemoval(parent, name, path);
  const int folder = dirfd(listing.get());
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(listing.get());
    if (entry == nullptr && errno != 0) throw systemFailure(errno, path);
    if (entry == nullptr) break;
    const std::string_view entryName = entry->d_name;
    if (entryName == "." || entryName == "..") continue;
    removeEntry(folder, entry->d_name, path + L"\\" + entryText(entryName));
  }
  if (unlinkat(parent, name, AT_REMOVEDIR) != 0) throw systemFailure(errno, path);
}

bool isLinkToFolder(const std::string& native) {
  struct stat link {};
  struct stat target {};
  return lstat(native.c_str(), &link) == 0 && S_ISLNK(link.st_mode) &&
         stat(native.c_str(), &target) == 0 && S_ISDIR(target.st_mode);
}

}  // namespace

void FileSystemObject::DeleteFolder(const std::wstring& path) {
  std::string native = nativePath(path).native();
  // A separator at the end would make the platform follow a link.
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  if (!isLinkToFolder(native)) {
    removeTree(AT_FDCWD, native.c_str(), path);
  } else if (unlink(native.c_str()) != 0) {
    throw systemFailure(errno, path);
  }
}

}  // namespace orvane
