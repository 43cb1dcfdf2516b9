#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The operations on files and folders that the program needs of the platform. Paths are path
/// texts. Every operation throws Failure with the platform's text; virtual so that a test can force
/// a failure that it cannot make for real.
class FileSystemObject {
 public:
  virtual ~FileSystemObject() = default;

  /// True for a folder (a link to one counts). Throws only when the test itself fails.
  virtual bool FolderExists(const std::wstring& path);

  /// True for a regular file (a link to one counts). Throws only when the test itself fails.
  virtual bool FileExists(const std::wstring& path);

  /// Creates one folder; its parent must exist.
  virtual void CreateFolder(const std::wstring& path);

  /// Deletes a file, a read-only one too. A symbolic link is removed, not its target.
  virtual void DeleteFile(const std::wstring& path);

  /// Deletes a folder and all in it, read-only items too. Links are removed, never followed.
  virtual void DeleteFolder(const std::wstring& path);

  /// Copies a file's bytes over `target`, which is replaced.
  virtual void CopyFile(const std::wstring& source, const std::wstring& target);

  /// The names of the direct sub-folders, in ascending order.
  virtual std::vector<std::wstring> SubFolders(const std::wstring& path);

  /// The whole content of a file.
  virtual std::string ReadFile(const std::wstring& path);

  /// Makes `bytes` the whole content of a file, which is created when it is missing.
  virtual void WriteFile(const std::wstring& path, std::string_view bytes);

  /// Appends `bytes` to a file that exists.
  virtual void AppendFile(const std::wstring& path, std::string_view bytes);
};

}  // namespace orvane
