#include "foundation/atomic_file.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// The end of the links that begin at `path`; there need not be a file.
fs::path withLinksFollowed(fs::path path) {
  constexpr int kMostLinks = 40;  // as many as the platform itself follows
  for (int i = 0; i < kMostLinks; ++i) {
    std::error_code isNoLink;
    const fs::path target = fs::read_symlink(path, isNoLink);
    if (isNoLink) break;
    path = path.parent_path() / target;
  }
  return path;
}

// The status of the file to be replaced; nothing when there is none.
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

// The name does not contain that of the file, which may be as long as the file system allows.
fs::path freeNameIn(const fs::path& folder) {
  constexpr int kMostLeftovers = 100;  // of killed processes
  const std::string stem = ".orvane-" + std::to_string(getpid()) + "-";
  for (int i = 0; i < kMostLeftovers; ++i) {
    const fs::path name = folder / (stem + std::to_string(i) + ".tmp");
    struct stat status {};
    if (lstat(name.c_str(), &status) != 0) return name;
  }
  throw systemFailure(EEXIST, pathText(folder / stem));
}

struct stat statusOf(const FileDescriptor& file, const std::wstring& path) {
  struct stat status {};
  if (fstat(file.number(), &status) != 0) throw systemFailure(errno, path);
  return status;
}

// Only what differs is set: some file systems refuse the calls, whatever they would set.
void takeOverOwnerAndMode(const FileDescriptor& file, const struct stat& old,
                          const std::wstring& path) {
  struct stat fresh = statusOf(file, path);
  if (fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) {
    // Only a privileged user can give a file away, but its owner can give it to his groups.
    if (fchown(file.number(), old.st_uid, old.st_gid) != 0 &&
        (errno != EPERM || fchown(file.number(), static_cast<uid_t>(-1), old.st_gid) != 0) &&
        errno != EPERM) {
      throw systemFailure(errno, path);
    }
    fresh = statusOf(file, path);
  }
  constexpr mode_t kPermissions = 07777;
  if (((fresh.st_mode ^ old.st_mode) & kPermissions) == 0) return;
  if (fchmod(file.number(), old.st_mode & kPermissions) != 0) throw systemFailure(errno, path);
}

// Makes the rename itself last; the content is safe already, so a failure changes nothing.
void syncFolder(const fs::path& folder) {
  const int number =
      open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (number < 0) return;
  fsync(number);
  close(number);
}

}  // namespace

FileReplacement::FileReplacement(const std::wstring& path)
    : path_(path),
      target_(withLinksFollowed(nativePath(path))),
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
  syncFolder(target_.parent_path());
}

void replaceFile(const std::wstring& path, std::string_view bytes) {
  FileReplacement replacement(path);
  FileDescriptor file(replacement.temporaryPath(), O_WRONLY | O_TRUNC);
  file.writeAll(bytes);
  file.close();
  replacement.commit();
}

}  // namespace orvane
