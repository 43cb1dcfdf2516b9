#include "foundation/atomic_file.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// Where the links from `path` on end; there need not be a file.
fs::path behindLinks(fs::path path) {
  constexpr int kMostLinks = 40;  // as many as the platform itself follows
  for (int i = 0; i < kMostLinks && fs::is_symlink(path); ++i) {
    path = path.parent_path() / fs::read_symlink(path);
  }
  return path;
}

// Gives the new file the permissions of the old one, if there is one; refuses a read-only one.
void takeOverPermissions(const FileDescriptor& file, const fs::path& old,
                         const std::wstring& path) {
  struct stat status {};
  if (stat(old.c_str(), &status) != 0) return;
  if (!S_ISREG(status.st_mode)) throw systemFailure(EINVAL, path);
  if (faccessat(AT_FDCWD, old.c_str(), W_OK, AT_EACCESS) != 0) throw systemFailure(errno, path);
  struct stat fresh {};
  if (fstat(file.number(), &fresh) != 0) throw systemFailure(errno, path);
  // Some file systems have one owner and one mode for all files and refuse every change.
  // Only a privileged user can give a file away; for any other it is his own already.
  const bool isOwned = fresh.st_uid == status.st_uid && fresh.st_gid == status.st_gid;
  if (!isOwned && fchown(file.number(), status.st_uid, status.st_gid) != 0 && errno != EPERM) {
    throw systemFailure(errno, path);
  }
  if (fresh.st_mode != status.st_mode && fchmod(file.number(), status.st_mode & 07777) != 0) {
    throw systemFailure(errno, path);
  }
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

void replaceFile(const std::wstring& path, std::string_view bytes) {
  const fs::path target = behindLinks(nativePath(path));
  fs::path fresh = target;
  fresh += ".new";
  unlink(fresh.c_str());  // what a crash has left of an earlier attempt
  try {
    FileDescriptor file(pathText(fresh), O_WRONLY | O_CREAT | O_EXCL);
    takeOverPermissions(file, target, path);
    file.writeAll(bytes);
    file.sync();
    file.close();
    if (std::rename(fresh.c_str(), target.c_str()) != 0) throw systemFailure(errno, path);
  } catch (const Failure&) {
    unlink(fresh.c_str());
    throw;
  }
  syncFolder(target.parent_path());
}

}  // namespace orvane
