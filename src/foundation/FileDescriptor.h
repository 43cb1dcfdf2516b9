#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace orvane {

/// An open file of the platform, closed at the end of its life. The texts of its failures name the
/// path that it was opened by.
class FileDescriptor {
 public:
  /// Opens the file with the flags of open(2); never inherited by child programs.
  FileDescriptor(const std::wstring& path, int flags, mode_t mode = 0666);

  ~FileDescriptor();
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  int number() const { return number_; }

  /// Opens a regular file for reading, in the scan tree by any letter case. Anything else (a
  /// folder, a pipe) is a failure at once.
  static FileDescriptor openRegularFile(const std::wstring& path);

  /// Reads up to `capacity` bytes; 0 at the end of the file.
  std::size_t read(char* buffer, std::size_t capacity) const;

  /// Writes all of `bytes`: in one call of the platform as long as that takes them all.
  void writeAll(std::string_view bytes) const;

  /// Waits until what was written is on the disk.
  void sync() const;

  /// Closes and reports the failure that the platform kept back until now.
  void close();

 private:
  int number_;
  std::wstring path_;
};

}  // namespace orvane
