#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The operations on files and folders that the program needs of the platform. Paths are path
/// texts, taken as they are spelled; only `IsSamePlace`, `CopyFile` (its source), `SubFolders` and
/// `ReadFile` find what is in the scan tree by any letter case (see existing_path.h). Every
/// operation throws Failure with the platform's text, "<path>: <reason>" unless said otherwise;
/// virtual so that a test can force a failure that it cannot make for real.
class FileSystemObject {
 public:
  virtual ~FileSystemObject() = default;

  /// True for a folder (a link to one counts). Throws only when the test itself fails, with the
  /// bare reason; a path that leads nowhere is no failure.
  virtual bool FolderExists(const std::wstring& path);

  /// True for a regular file (a link to one counts). Throws as `FolderExists` does.
  virtual bool FileExists(const std::wstring& path);

  /// True when both paths lead to one file or folder, so that what is done to the one is done to
  /// the other: through links, under a second hard link, in another letter case. A path that leads
  /// nowhere gives false. Throws as `FolderExists` does.
  virtual bool IsSamePlace(const std::wstring& path, const std::wstring& otherPath);

  /// Creates one folder; its parent must exist.
  virtual void CreateFolder(const std::wstring& path);

  /// Deletes a file, a read-only one too. A symbolic link is removed, not its target.
  virtual void DeleteFile(const std::wstring& path);

  /// Deletes a folder and all in it, read-only items too. Links are removed, never followed; a path
  /// that is itself a link to a folder loses the link only. Stops at the first failure.
  virtual void DeleteFolder(const std::wstring& path);

  /// Copies a file's bytes and permissions over `target`, which is replaced. After a failure in
  /// mid-copy there is no target.
  virtual void CopyFile(const std::wstring& source, const std::wstring& target);

  /// The names of the direct sub-folders (links to folders count), in ascending order. An entry of
  /// which it cannot be told (a link to nothing, one that has gone meanwhile) is among them: it may
  /// be a folder, and whoever goes there will learn why not.
  virtual std::vector<std::wstring> SubFolders(const std::wstring& path);

  /// The whole content of a regular file of up to 64 MiB; a larger one is refused.
  virtual std::string ReadFile(const std::wstring& path);

  /// Makes `bytes` the whole content of a file, which is created when it is missing, in one step:
  /// after a failure or a crash the file holds what it held before.
  virtual void WriteFile(const std::wstring& path, std::string_view bytes);

  /// Creates an empty file; one that exists already stays as it is.
  virtual void CreateFile(const std::wstring& path);

  /// Appends `bytes` to a file that exists, in one piece: what two programs append stands side by
  /// side, never mixed.
  virtual void AppendFile(const std::wstring& path, std::string_view bytes);
};

}  // namespace orvane
