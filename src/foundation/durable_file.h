#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

/// Writing that survives a crash: the replacement of a file that must not be lost, and waiting
/// until what was written is on the disk.
namespace orvane {

/// The new content of a file, written to a temporary file in the same folder. `commit` syncs it and
/// renames it over the old file: after a failure or a crash the file holds either all of the old or
/// all of the new content. Without a commit the destructor removes the temporary file.
///
/// The file keeps its mode and, where the user has the right to set it, its owner. A symbolic link
/// stays, and its target is replaced; other hard links keep the old content.
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

  /// Renames the temporary file over the old one. When it throws Failure, the file is as it was.
  /// The temporary file must not be open for writing any more.
  void commit();

 private:
  std::wstring path_;
  std::filesystem::path target_;  ///< the file itself, with all links resolved
  std::optional<struct stat> old_;
  std::filesystem::path temporary_;  ///< empty after the rename
  std::wstring temporaryPath_;
};

/// Makes `bytes` the whole content of a file, through a FileReplacement.
void replaceFile(const std::wstring& path, std::string_view bytes);

/// Runs `sync`, which waits for a disk, on a thread of its own while the window's events are
/// handled. Where no thread can be had it runs on this one. Returns when it is done and throws what
/// it throws.
void syncBesideWindow(const std::function<void()>& sync);

/// True when each file and folder of the file system of `path` must be synced by itself: one in
/// user space (FUSE: ntfs-3g, exFAT and others) does not learn of `syncDiskOf`. Throws Failure.
bool syncsFilesOnly(const std::wstring& path);

/// Waits until everything that was written to the disk of `folder` is on it. Throws Failure.
void syncDiskOf(const std::wstring& folder);

/// Waits until the content of a file, or the list of names in a folder, is on the disk. Does
/// nothing on a file system without that request. Throws Failure.
void syncEntry(const std::wstring& path);

}  // namespace orvane
