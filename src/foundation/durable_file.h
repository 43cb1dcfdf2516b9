#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

/// Writing that survives a crash: replacing a file in one step, and syncing to the disk.
namespace orvane {

/// Replaces the content of a file. The new content is written to a temporary file in the same
/// folder. `commit` syncs this file and renames it over the old one, so that after a failure or a
/// crash the file has either the old or the new content. Without a commit, the destructor removes
/// the temporary file.
///
/// The file keeps its mode and, if the user has the right to set it, its owner. A symbolic link is
/// kept and its target is replaced; other hard links keep the old content.
class FileReplacement {
 public:
  /// Creates an empty temporary file. `path` need not exist. Throws Failure if it is not a regular
  /// file or may not be written.
  explicit FileReplacement(const std::wstring& path);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  /// The temporary file. The caller may write it, or remove and create it again.
  const std::wstring& temporaryPath() const { return temporaryPath_; }

  /// Renames the temporary file over the old one. It must no longer be open for writing. If this
  /// throws Failure, the old file is unchanged.
  void commit();

 private:
  std::wstring path_;
  std::filesystem::path target_;  ///< the file itself, with all links resolved
  std::optional<struct stat> old_;
  std::filesystem::path temporary_;  ///< empty after the rename
  std::wstring temporaryPath_;
};

/// Replaces the content of a file by `bytes`, with a FileReplacement.
void replaceFile(const std::wstring& path, std::string_view bytes);

/// True if each file and folder on the file system of `path` must be synced by itself: file systems
/// in user space (FUSE: ntfs-3g, exFAT and others) ignore `syncDiskOf`. Throws Failure.
bool syncsFilesOnly(const std::wstring& path);

/// Syncs the whole file system of `folder`. Throws Failure.
void syncDiskOf(const std::wstring& folder);

/// Syncs the content of a file, or the entries of a folder. Does nothing if the file system does
/// not support it. Throws Failure.
void syncEntry(const std::wstring& path);

/// Syncs a file or folder and all folders above it, some of which may be new. Throws Failure.
void syncWithFolders(const std::wstring& path);

/// Syncs the entries of a folder, after a change that is not undone if this fails.
void trySyncFolder(const std::wstring& folder);

}  // namespace orvane
