#include "foundation/FileSystemObject.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/durable_file.h"
#include "foundation/letter_case.h"
#include "foundation/paths.h"

namespace orvane {

std::unique_ptr<FileSystemObject> gFileSystem;

FileSystemObject& fileSystem() {
  if (!gFileSystem) gFileSystem = std::make_unique<FileSystemObject>();
  return *gFileSystem;
}

namespace {

bool isMissing(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

// Empty if the path does not exist.
std::optional<struct stat> statusOf(const std::wstring& path) {
  struct stat status {};
  if (stat(nativePath(path).c_str(), &status) == 0) return status;
  if (isMissing(errno)) return std::nullopt;
  throw systemFailure(errno);
}

using Listing = std::unique_ptr<DIR, int (*)(DIR*)>;

// The next entry of a folder other than "." and ".."; null after the last one.
const dirent* nextEntry(const Listing& listing, const std::wstring& path) {
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(listing.get());
    if (entry == nullptr && errno != 0) throw systemFailure(errno, path);
    if (entry == nullptr) return nullptr;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") return entry;
  }
}

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
  const std::wstring otherFound = existingPath(otherPath);
  const auto other = statusOf(otherFound);
  if (!other) return false;
  const std::wstring found = existingPath(path);
  const auto one = statusOf(found);
  if (!one || one->st_dev != other->st_dev) return false;
  return one->st_ino == other->st_ino || isOneEntryInAnyCase(found, otherFound);
}

void FileSystemObject::CreateFolder(const std::wstring& path) {
  if (mkdir(nativePath(path).c_str(), 0777) != 0) throw systemFailure(errno, path);
}

void FileSystemObject::DeleteFile(const std::wstring& path) {
  // The permissions of the folder decide, not those of the file.
  if (unlink(nativePath(path).c_str()) != 0) throw systemFailure(errno, path);
}

std::vector<std::wstring> FileSystemObject::SubFolders(const std::wstring& path) {
  const Listing listing(opendir(nativePath(existingPath(path)).c_str()), closedir);
  if (!listing) throw systemFailure(errno, path);
  std::vector<std::wstring> names;
  while (const dirent* entry = nextEntry(listing, path)) {
    if (mayBeFolder(listing, *entry)) names.push_back(entryText(entry->d_name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Content.

namespace {

constexpr std::size_t kLargestTextFile = std::size_t{64} << 20;
constexpr std::size_t kReadBlock = std::size_t{16} << 10;
constexpr std::size_t kCopyBlock = std::size_t{1} << 20;

void copyBytes(const FileDescriptor& source, const FileDescriptor& target) {
  std::vector<char> block(kCopyBlock);
  while (const std::size_t count = source.read(block.data(), block.size())) {
    target.writeAll({block.data(), count});
  }
}

}  // namespace

void FileSystemObject::CopyFile(const std::wstring& source, const std::wstring& target) {
  if (IsSamePlace(source, target)) throw systemFailure(EEXIST, target);
  const FileDescriptor in = FileDescriptor::openRegularFile(source);
  FileDescriptor out(target, O_WRONLY | O_CREAT | O_TRUNC, in.status().st_mode & 0777);
  try {
    copyBytes(in, out);
    out.close();
  } catch (...) {
    unlink(nativePath(target).c_str());
    throw;
  }
}

std::string FileSystemObject::ReadFile(const std::wstring& path) {
  const FileDescriptor file = FileDescriptor::openRegularFile(path);
  std::string content;
  std::vector<char> block(kReadBlock);
  while (const std::size_t count = file.read(block.data(), block.size())) {
    if (content.size() + count > kLargestTextFile) throw systemFailure(EFBIG, path);
    content.append(block.data(), count);
  }
  return content;
}

void FileSystemObject::WriteFile(const std::wstring& path, std::string_view bytes) {
  replaceFile(path, bytes);
}

void FileSystemObject::CreateFile(const std::wstring& path) {
  FileDescriptor(path, O_WRONLY | O_CREAT).close();
}

void FileSystemObject::AppendFile(const std::wstring& path, std::string_view bytes) {
  FileDescriptor file(path, O_WRONLY | O_APPEND);
  file.writeAll(bytes);
  file.close();
}

// Removal of folders. Every step uses the descriptor of the parent folder instead of a path, so
// that a link created meanwhile cannot lead the removal out of the folder.

namespace {

// Opens a folder but not a link to one. Gives its owner the right to list and change it, so that a
// read-only folder can be removed.
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
    fchmod(folder, status.st_mode | S_IRWXU);  // if it fails, so does the first removal
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
  while (const dirent* entry = nextEntry(listing, path)) {
    removeEntry(dirfd(listing.get()), entry->d_name, path + L"\\" + entryText(entry->d_name));
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
  std::string native = nativePath(path);
  // The platform would follow a link with a final separator.
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  if (!isLinkToFolder(native)) {
    removeTree(AT_FDCWD, native.c_str(), path);
  } else if (unlink(native.c_str()) != 0) {
    throw systemFailure(errno, path);
  }
}

}  // namespace orvane
