#include "foundation/durable_file.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/Place.h"
#include "foundation/paths.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// Empty if the file does not exist.
std::optional<struct stat> statusOfReplaceable(const fs::path& file, const std::wstring& path) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw systemFailure(errno, path);
  }
  if (S_ISDIR(status.st_mode)) throw systemFailure(EISDIR, path);
  if (!S_ISREG(status.st_mode)) throw systemFailure(EINVAL, path);
  if (faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0) throw systemFailure(errno, path);
  return status;
}

// Does not contain the name of the file, which can have the maximum length already.
fs::path freeNameIn(const fs::path& folder) {
  constexpr int kMostLeftovers = 100;  // of killed processes
  const std::string stem = ".orvane-" + std::to_string(getpid()) + "-";
  for (int i = 0; i < kMostLeftovers; ++i) {
    fs::path name = folder / (stem + std::to_string(i) + ".tmp");
    struct stat status {};
    if (lstat(name.c_str(), &status) != 0) return name;
  }
  throw systemFailure(EEXIST, pathText(folder / stem));
}

// Sets only what differs, because some file systems refuse the calls whatever they set.
void takeOverOwnerAndMode(const FileDescriptor& file, const struct stat& old,
                          const std::wstring& path) {
  struct stat fresh = file.status();
  if (fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) {
    // Only a privileged user can change the owner, but the owner can set one of his own groups.
    if (fchown(file.number(), old.st_uid, old.st_gid) != 0 &&
        (errno != EPERM || fchown(file.number(), static_cast<uid_t>(-1), old.st_gid) != 0) &&
        errno != EPERM) {
      throw systemFailure(errno, path);
    }
    fresh = file.status();
  }
  constexpr mode_t kPermissions = 07777;
  if (((fresh.st_mode ^ old.st_mode) & kPermissions) == 0) return;
  if (fchmod(file.number(), old.st_mode & kPermissions) != 0) throw systemFailure(errno, path);
}

// The error of `sync`, a system call on a descriptor, or 0. EACCES also if the file may be written
// but not read.
template <typename Sync>
int errorOf(Sync sync, const std::wstring& path) {
  const auto opened = FileDescriptor::tryToOpen(path, O_RDONLY | O_NONBLOCK);
  return opened && sync(opened->number()) == 0 ? 0 : errno;
}

}  // namespace

FileReplacement::FileReplacement(const std::wstring& path)
    : path_(path),
      target_(resolvedPlace(path).path()),
      old_(statusOfReplaceable(target_, path)),
      temporary_(freeNameIn(target_.parent_path())),
      temporaryPath_(pathText(temporary_)) {
  const mode_t mode = old_ ? (old_->st_mode & 0777) | S_IRUSR | S_IWUSR : 0666;
  const FileDescriptor takesTheName(temporaryPath_, O_WRONLY | O_CREAT | O_EXCL, mode);
}

FileReplacement::~FileReplacement() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void FileReplacement::commit() {
  FileDescriptor file(temporaryPath_, O_WRONLY | O_NOFOLLOW);
  if (old_) takeOverOwnerAndMode(file, *old_, path_);
  file.sync();
  file.close();
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) throw systemFailure(errno, path_);
  temporary_.clear();
  trySyncFolder(pathText(target_.parent_path()));
}

void replaceFile(const std::wstring& path, std::string_view bytes) {
  FileReplacement replacement(path);
  FileDescriptor file(replacement.temporaryPath(), O_WRONLY | O_TRUNC);
  file.writeAll(bytes);
  file.close();
  replacement.commit();
}

bool syncsFilesOnly(const std::wstring& path) {
  struct statfs status {};
  if (statfs(nativePath(path).c_str(), &status) != 0) throw systemFailure(errno, path);
  return status.f_type == FUSE_SUPER_MAGIC;
}

void syncDiskOf(const std::wstring& folder) {
  const int error = errorOf(syncfs, folder);
  if (error == EACCES) {
    sync();
  } else if (error != 0) {
    throw systemFailure(error, folder);
  }
}

void syncEntry(const std::wstring& path) {
  const int error = errorOf(fsync, path);
  if (error != 0 && error != EACCES && error != EINVAL && error != ENOTSUP) {
    throw systemFailure(error, path);
  }
}

void syncWithFolders(const std::wstring& path) {
  fs::path place = nativePath(path);
  syncEntry(path);
  for (; place.has_relative_path(); place = place.parent_path()) {
    syncEntry(pathText(place.parent_path()));
  }
}

void trySyncFolder(const std::wstring& folder) {
  errorOf(fsync, folder);
}

}  // namespace orvane
