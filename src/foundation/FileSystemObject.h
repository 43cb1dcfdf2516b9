#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The program's operations on files and folders. Paths are path texts, used as they are spelled;
/// only `IsSamePlace`, `CopyFile` (its source), `SubFolders` and `ReadFile` find files of the scan
/// tree in any letter case (see existing_path.h). Every operation throws Failure with the
/// platform's text, "<path>: <reason>" unless said otherwise. Virtual so that a test can force a
/// failure that it cannot make for real.
class FileSystemObject {
 public:
  virtual ~FileSystemObject() = default;

  /// True for a folder or a link to one, false for a path that does not exist. When neither is
  /// certain it throws Failure with the reason alone.
  virtual bool FolderExists(const std::wstring& path);

  /// True for a regular file or a link to one. Throws as `FolderExists` does.
  virtual bool FileExists(const std::wstring& path);

  /// True when both paths lead to the same file or folder: through links, by a second hard link, in
  /// another letter case. False when one of them does not exist. Throws as `FolderExists` does.
  virtual bool IsSamePlace(const std::wstring& path, const std::wstring& otherPath);

  /// Creates one folder; its parent must exist.
  virtual void CreateFolder(const std::wstring& path);

  /// Deletes a file, a read-only one too. A symbolic link is removed, not its target.
  virtual void DeleteFile(const std::wstring& path);

  /// Deletes a folder and its contents, read-only items too. Links are removed and never followed;
  /// of a path that is itself a link to a folder only the link is removed. Stops at the first
  /// failure.
  virtual void DeleteFolder(const std::wstring& path);

  /// Copies a file's bytes and permissions over `target`. After a failure during the copy there is
  /// no target.
  virtual void CopyFile(const std::wstring& source, const std::wstring& target);

  /// The names of the direct sub-folders and links to folders, in ascending order. An entry whose
  /// kind is unknown (a link to a missing target, one that was removed meanwhile) is included:
  /// its use will fail and say why.
  virtual std::vector<std::wstring> SubFolders(const std::wstring& path);

  /// The whole content of a regular file of up to 64 MiB; a larger one is refused.
  virtual std::string ReadFile(const std::wstring& path);

  /// Makes `bytes` the whole content of a file, which need not exist, in one step: after a failure
  /// or a crash the file is as it was before.
  virtual void WriteFile(const std::wstring& path, std::string_view bytes);

  /// Creates an empty file; an existing one is not changed.
  virtual void CreateFile(const std::wstring& path);

  /// Appends `bytes` to an existing file in one piece: appends of two programs never mix.
  virtual void AppendFile(const std::wstring& path, std::string_view bytes);
};

}  // namespace orvane
