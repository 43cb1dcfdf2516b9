#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

/// The safe replacement of a file, for everything that writes over a file which must not be lost.
namespace orvane {

/// The new content of a file, written to a temporary file in the same folder. `commit` brings it to
/// the disk and renames it over the old file: whatever happens, a crash included, the file holds
/// either all of the old or all of the new. Without a commit the temporary file goes with the
/// object.
///
/// The file keeps its mode and, as far as the user may give a file away, its owner. A symbolic link
/// stays, and the file that it leads to is replaced; other hard links keep the old content.
class FileReplacement {
 public:
  /// Creates the temporary file, empty, under a name that nothing else has. `path` need not exist.
  /// Throws Failure for what is no regular file and for a file that may not be written.
  explicit FileReplacement(const std::wstring& path);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// The temporary file. It may be written to, or removed and created again.
  const std::wstring& temporaryPath() const { return temporaryPath_; }

  /// Puts the temporary file in the place of the old one. Throws Failure and then leaves the file
  /// as it was. Nothing may have the temporary file open for writing any more.
  void commit();

 private:
  std::wstring path_;
  std::filesystem::path target_;  ///< the file itself, with all links followed
  std::optional<struct stat> old_;
  std::filesystem::path temporary_;  ///< empty once it is in the place of the old file
  std::wstring temporaryPath_;
};

/// Makes `bytes` the whole content of a file, through a FileReplacement.
void replaceFile(const std::wstring& path, std::string_view bytes);

}  // namespace orvane
