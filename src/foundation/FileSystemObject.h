#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The program's operations on files and folders. Paths are path texts, used as spelled; only
/// `IsSamePlace`, `CopyFile` (its source), `SubFolders` and `ReadFile` find files of the scan tree
/// in any letter case (see letter_case.h). Unless stated otherwise, an operation that fails throws
/// Failure with the text "<path>: <reason>". The operations are virtual so that a test can force a
/// failure.
class FileSystemObject {
 public:
  virtual ~FileSystemObject() = default;

  /// True for a folder or a link to one, false for a path that does not exist. If neither is
  /// certain, throws Failure with the reason alone.
  virtual bool FolderExists(const std::wstring& path);

  /// True for a regular file or a link to one. Throws as `FolderExists` does.
  virtual bool FileExists(const std::wstring& path);

  /// True if both paths lead to the same file or folder, also through links, by a second hard link
  /// or in another letter case. False if one of them does not exist. Throws as `FolderExists` does.
  virtual bool IsSamePlace(const std::wstring& path, const std::wstring& otherPath);

  /// Creates one folder; its parent must exist.
  virtual void CreateFolder(const std::wstring& path);

  /// Deletes a file, even a read-only one. A symbolic link is removed, not its target.
  virtual void DeleteFile(const std::wstring& path);

  /// Deletes a folder and its contents, even read-only ones. Links are removed and never followed,
  /// also if `path` itself is a link. Stops at the first failure.
  virtual void DeleteFolder(const std::wstring& path);

  /// Copies the content and permissions of a file to `target`, which is overwritten. If the copy
  /// fails, `target` is deleted.
  virtual void CopyFile(const std::wstring& source, const std::wstring& target);

  /// The names of the direct sub-folders and links to folders, in ascending order. An entry of
  /// unknown type (a broken link, or an entry that was removed meanwhile) is included, because its
  /// use reports the reason.
  virtual std::vector<std::wstring> SubFolders(const std::wstring& path);

  /// The whole content of a regular file. Throws Failure if it is larger than 64 MiB.
  virtual std::string ReadFile(const std::wstring& path);

  /// Replaces the content of a file, which need not exist, by `bytes` in one step: after a failure
  /// or a crash the file is unchanged.
  virtual void WriteFile(const std::wstring& path, std::string_view bytes);

  /// Creates an empty file, or leaves an existing one unchanged.
  virtual void CreateFile(const std::wstring& path);

  /// Appends `bytes` to an existing file in one write, so that those of two programs do not mix.
  virtual void AppendFile(const std::wstring& path, std::string_view bytes);
};

/// The program's file-system object, created at first use and kept until the process ends.
extern std::unique_ptr<FileSystemObject> gFileSystem;

/// `gFileSystem`, created at first use.
FileSystemObject& fileSystem();

}  // namespace orvane
