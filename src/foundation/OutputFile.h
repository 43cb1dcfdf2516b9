#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"

namespace orvane {

/// The identity and state of a file: enough to notice that another program changed or replaced it.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modifiedNs = 0;
  bool operator==(const FileStamp&) const = default;
};

/// A regular file that a container reads or writes. All system calls of the containers are made
/// here; each is checked, and a failed one throws Failure "<path>: <strerror>". The destructor
/// closes the file, and removes one that was created here and not closed by `close`.
class OutputFile {
 public:
  /// Creates `path`. An older file is removed first and the new one created exclusively, so that a
  /// symbolic or hard link under that name never leads a write into another file.
  static OutputFile createAnew(const std::wstring& path);
  /// Creates `path`; fails when the name is taken.
  static OutputFile createExclusively(const std::wstring& path);
  /// Opens `path` to write to it; nothing when it does not exist. Throws Failure for a symbolic
  /// link, a file with a second hard link and anything but a regular file.
  static std::optional<OutputFile> openToAppend(const std::wstring& path);
  /// Opens `path` for reading, to be replaced by a FileReplacement later: through links, and in the
  /// scan tree by any letter case. Throws Failure for a file with a second hard link, because the
  /// other name would keep the old content.
  static OutputFile openToReplace(const std::wstring& path);
  /// Opens `path` for reading, through links.
  static OutputFile openToRead(const std::wstring& path);

  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile();

  const std::wstring& path() const { return file_.path(); }
  /// The file as it is now.
  FileStamp stamp() const;
  std::uint64_t size() const { return stamp().size; }

  /// Writes the parts one after another from `offset` on.
  void write(std::uint64_t offset, std::span<const ByteView> parts);
  void write(std::uint64_t offset, ByteView bytes) { write(offset, std::span(&bytes, 1)); }
  /// Fills `into` from `offset`. Throws Failure when the file ends before that.
  void read(std::uint64_t offset, std::span<std::uint8_t> into) const;
  /// Copies a range of `source` to `offset`, piece by piece.
  void copy(const OutputFile& source, std::uint64_t from, std::uint64_t length,
            std::uint64_t offset);

  /// Cuts the file back to `size` as part of undoing; a failure is not reported.
  void cutBack(std::uint64_t size) noexcept;
  /// Closes the file; a created one is kept from here on. A failure is reported while the file is
  /// still open.
  void close();

 private:
  OutputFile(const std::wstring& path, int flags, bool created);
  void requireOneHardLink() const;

  FileDescriptor file_;
  bool removeAtEnd_;
};

}  // namespace orvane
