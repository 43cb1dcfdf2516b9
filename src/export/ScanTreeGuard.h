#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "export/WrittenFiles.h"
#include "foundation/FileDescriptor.h"

/// The scan tree is read and never changed, whatever the settings say. These guards stand in front
/// of everything that the export creates or deletes.
namespace orvane {

/// True for a text that can name one folder below another: not empty, not "." or "..", without a
/// separator or a NUL.
bool isFolderName(const std::wstring& name);

/// A folder that is kept open, so that it can be told whether a path still leads to it: a disk that
/// was unmounted leaves an empty folder under the same name.
class HeldFolder {
 public:
  /// Throws Failure when there is no folder under `path`.
  explicit HeldFolder(const std::wstring& path);

  /// Throws Failure when `path` leads to another folder now, or to none.
  void requireAt(const std::wstring& path) const;

  /// False where `requireAt` would throw.
  bool isAt(const std::wstring& path) const;

 private:
  FileDescriptor folder_;
  FileIdentity identity_;
};

/// Keeps the output of one document out of the scan tree and inside its output folder.
class OutputGuard {
 public:
  /// @param outputFolder  where the document goes; need not exist yet.
  /// @param documentName  a document of the current batch.
  /// Throws Failure when the folder lies in the scan tree.
  OutputGuard(const std::wstring& outputFolder, const std::wstring& documentName);

  /// Keeps hold of the output folder, which is there by now. Throws Failure when it is not the one
  /// that the constructor looked at.
  void enterFolder();

  /// Answers which file stands under the name of an output file. Throws Failure when the file would
  /// lie in the scan tree or outside the output folder, or when another folder has taken the output
  /// folder's place. Two system calls, unless the name is a link or holds a separator.
  std::optional<FileIdentity> check(const std::wstring& file) const;

 private:
  bool isDirectlyInFolder(const std::wstring& file) const;
  void checkPlace(const std::wstring& file) const;
  void requireOutsideScanTree(const std::filesystem::path& place, const std::wstring& path) const;

  std::wstring folderText_;
  std::filesystem::path outputFolder_;
  std::vector<std::filesystem::path> scanTree_;
  std::optional<HeldFolder> held_;
};

/// Where the scans of the current batch lie. It is found out while they can be looked at, so that
/// it is known also after their disk has gone.
class ScansOfBatch {
 public:
  /// @param subFolders  the names of all sub-folders of the batch.
  explicit ScansOfBatch(const std::vector<std::wstring>& subFolders);

  /// Throws Failure for a folder that is, holds or is in the scan tree, or holds the program's
  /// folder; for every folder when it could not be found out where the scans lie.
  void requireDeletable(const std::wstring& folder) const;

 private:
  std::vector<std::filesystem::path> roots_;
  std::wstring unknown_;  // why; empty when the roots are known
};

/// Deletes `SavePath\BatchID` with all it holds, after a document of the current batch has failed.
/// A folder that `scans` does not let go stays, with a log line that says so. A failure of the
/// delete itself is silent. True when the folder was there and has gone.
bool deleteBatchOutputFolder(const std::wstring& SavePath, const std::wstring& BatchID,
                             const ScansOfBatch& scans);

}  // namespace orvane
