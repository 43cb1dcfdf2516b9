#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/ByteSource.h"
#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"

namespace orvane {

/// A regular file that a container reads or writes. Makes all system calls of the containers and
/// checks each; a failed call throws Failure "<path>: <strerror>". The destructor closes the file,
/// and deletes it if it was created here and not closed by `close`.
class OutputFile final : public ByteSource {
 public:
  /// Creates `path`. An existing file is removed first and the new one is created exclusively, so
  /// that nothing is written through a symbolic or hard link of that name.
  static OutputFile createAnew(const std::wstring& path);
  /// Creates `path`. Throws Failure if it exists.
  static OutputFile createExclusively(const std::wstring& path);
  /// Opens `path` for writing; empty if it does not exist. Throws Failure for a symbolic link, a
  /// file with a second hard link, and anything but a regular file.
  static std::optional<OutputFile> openToAppend(const std::wstring& path);
  /// Opens for reading a file that a FileReplacement will replace. Follows links; in the scan tree,
  /// finds the file in any letter case. Throws Failure for a file with a second hard link, because
  /// the other name would keep the old content.
  static OutputFile openToReplace(const std::wstring& path);
  /// Opens `path` for reading. Follows links.
  static OutputFile openToRead(const std::wstring& path);

  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile() override;

  const std::wstring& path() const { return file_.path(); }
  /// The current identity and state.
  FileState state() const { return file_.state(); }
  std::uint64_t size() const override { return state().size; }

  /// Writes the parts consecutively, starting at `offset`.
  void write(std::uint64_t offset, std::span<const ByteView> parts);
  void write(std::uint64_t offset, ByteView bytes) { write(offset, std::span(&bytes, 1)); }
  /// Throws Failure for a read that fails.
  std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override;
  /// Fills `into` with the bytes at `offset`. Throws Failure if the file ends before.
  void read(std::uint64_t offset, std::span<std::uint8_t> into) const;
  /// Copies a range of `source` to `offset`.
  void copy(const OutputFile& source, std::uint64_t from, std::uint64_t length,
            std::uint64_t offset);

  /// Copies all of `source` to the beginning of this file, which is empty. Where the file system
  /// can, both share their blocks from then on, or it copies them itself.
  void copyAll(const OutputFile& source);

  /// Truncates the file to `size`, to undo a write. A failure is not reported.
  void cutBack(std::uint64_t size) noexcept;
  /// Closes the file. A created file is now kept. If this throws, the file is still open.
  void close();

 private:
  OutputFile(FileDescriptor file, bool created);
  void requireOneHardLink() const;

  FileDescriptor file_;
  bool removeAtEnd_;
};

}  // namespace orvane
