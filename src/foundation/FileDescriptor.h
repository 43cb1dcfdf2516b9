#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

#include "foundation/FileState.h"

namespace orvane {

/// Owns the descriptor of an open file. Failures name the path that was opened.
class FileDescriptor {
 public:
  /// Opens the file with the flags of open(2). Child programs do not inherit it.
  FileDescriptor(const std::wstring& path, int flags, mode_t mode = 0666);

  /// Opens the file. If that fails, the result is empty and errno has the reason.
  static std::optional<FileDescriptor> tryToOpen(const std::wstring& path, int flags);

  /// Opens an existing file; in the scan tree, in any letter case (see letter_case.h).
  static FileDescriptor openInAnyCase(const std::wstring& path, int flags);

  ~FileDescriptor();
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  /// Opens a regular file for reading; in the scan tree, in any letter case. Throws Failure for
  /// anything else, such as a folder or a pipe.
  static FileDescriptor openRegularFile(const std::wstring& path);

  int number() const { return number_; }
  const std::wstring& path() const { return path_; }
  struct stat status() const;
  FileState state() const { return stateOf(status()); }

  /// Reads up to `capacity` bytes; 0 at the end of the file.
  std::size_t read(char* buffer, std::size_t capacity) const;

  /// Reads the bytes at `offset`, wherever `read` stands, and returns their number: less than
  /// `into.size()` only at the end of the file.
  std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const;

  /// The same. `error` gets 0, or the errno of a read that failed; the bytes before it count.
  std::size_t tryToReadAt(std::uint64_t offset, std::span<std::uint8_t> into,
                          int& error) const noexcept;

  /// Writes all of `bytes`, in one system call if the platform accepts them.
  void writeAll(std::string_view bytes) const;

  /// Waits until all written data is on the disk.
  void sync() const;

  /// Closes the file. If the platform reports a failed write only now, this throws Failure and the
  /// file is still open, so that the caller can undo the write.
  void close();

 private:
  FileDescriptor(int number, std::wstring path) : number_(number), path_(std::move(path)) {}

  int number_;
  std::wstring path_;
};

}  // namespace orvane
