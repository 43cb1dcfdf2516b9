#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"

namespace orvane {

/// Which file stands under a name, and how it was left: enough to notice that another hand changed
/// or replaced it.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modifiedNs = 0;
  bool operator==(const FileStamp&) const = default;
};

/// The failure of what stands in a file: "<path>: <reason>".
Failure fileFailure(std::wstring_view path, std::string_view reason);

/// A regular file under work. All system calls of the containers are made here; each is checked,
/// and a failed one throws Failure "<path>: <strerror>". The object closes its file; a file that
/// was created here and not yet closed by `close` is removed with it.
class OutputFile {
 public:
  /// Creates `path` anew. An older name is removed first and the new file made exclusively, so that
  /// a symbolic or hard link under that name never leads a write into another file.
  static OutputFile createAnew(const std::wstring& path);
  /// Creates `path`; fails when the name is taken.
  static OutputFile createExclusively(const std::wstring& path);
  /// Opens `path` to write to it; nothing when it is missing. A symbolic link, a file with a second
  /// hard link and everything that is no regular file throw Failure.
  static std::optional<OutputFile> openToAppend(const std::wstring& path);
  /// Opens `path` for reading, in order to replace it by a FileReplacement later: through links and
  /// in the scan tree by any letter case. A file with a second hard link throws Failure, for the
  /// other name would keep the old content.
  static OutputFile openToReplace(const std::wstring& path);
  /// Opens `path` for reading, through links.
  static OutputFile openToRead(const std::wstring& path);

  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile();

  const std::wstring& path() const { return path_; }
  /// The file as it stands now.
  FileStamp stamp() const;
  std::uint64_t size() const { return stamp().size; }

  /// Writes the parts one behind another, beginning at `offset`.
  void write(std::uint64_t offset, std::span<const ByteView> parts);
  void write(std::uint64_t offset, ByteView bytes) { write(offset, std::span(&bytes, 1)); }
  /// Fills `into` from `offset`; a file that ends before throws Failure.
  void read(std::uint64_t offset, std::span<std::uint8_t> into) const;
  /// Copies a range of `source` to `offset`, piece by piece.
  void copy(const OutputFile& source, std::uint64_t from, std::uint64_t length,
            std::uint64_t offset);

  /// Cuts the file back to `size`, as part of undoing: a failure is not told.
  void cutBack(std::uint64_t size) noexcept;
  /// Closes the file; a created file stays from here on. A failure is told while the file is still
  /// open.
  void close();

 private:
  OutputFile(std::wstring path, int flags, bool created);
  void requireRegularFile() const;
  void requireOneHardLink() const;

  std::wstring path_;
  std::filesystem::path native_;
  int descriptor_ = -1;
  bool removeAtEnd_ = false;
};

}  // namespace orvane
