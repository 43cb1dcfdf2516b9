#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace orvane {

/// Which file a name leads to.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

inline FileIdentity identityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino};
}

/// The owner of an open file. Its failures name the path by which the file was opened.
class FileDescriptor {
 public:
  /// Opens the file with the flags of open(2). Child programs do not inherit it.
  FileDescriptor(const std::wstring& path, int flags, mode_t mode = 0666);

  /// Opens the file; nothing, with the reason in errno, when that fails.
  static std::optional<FileDescriptor> tryToOpen(const std::wstring& path, int flags);

  ~FileDescriptor();
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  /// Opens a regular file for reading, in the scan tree by any letter case. Refuses anything else
  /// (a folder, a pipe) at once.
  static FileDescriptor openRegularFile(const std::wstring& path);

  int number() const { return number_; }
  const std::wstring& path() const { return path_; }
  struct stat status() const;

  /// Reads up to `capacity` bytes; 0 at the end of the file.
  std::size_t read(char* buffer, std::size_t capacity) const;

  /// Writes all of `bytes`, in one system call if the platform takes them all.
  void writeAll(std::string_view bytes) const;

  /// Waits until what was written is on the disk.
  void sync() const;

  /// Closes the file. A write that is only now found to have failed is reported while the file is
  /// still open, so that the caller can undo its work.
  void close();

 private:
  FileDescriptor(int number, std::wstring path) : number_(number), path_(std::move(path)) {}

  int number_;
  std::wstring path_;
};

}  // namespace orvane
