#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/FileDescriptor.h"
#include "foundation/FileState.h"
#include "foundation/Place.h"
#include "foundation/paths.h"

/// The export never changes the scan tree, whatever the settings are. These guards check everything
/// that the export creates or deletes.
namespace orvane {

/// A folder that is kept open, to check later whether a path still leads to it. A disk that was
/// unmounted leaves an empty folder of the same name.
class HeldFolder {
 public:
  /// Throws Failure if `path` is not a folder.
  explicit HeldFolder(const std::wstring& path);

  /// Throws Failure if `path` now leads to another folder or to none.
  void requireAt(const std::wstring& path) const;

  /// Returns false if `requireAt` would throw.
  bool isAt(const std::wstring& path) const;

 private:
  FileDescriptor folder_;
  FileIdentity identity_;
};

/// Keeps the output of one document out of the scan tree and inside its output folder.
class OutputGuard {
 public:
  /// @param outputFolder  the output folder of the document; need not exist yet. Empty: the root.
  /// @param documentName  a document of the current batch.
  /// Throws Failure if the folder is inside the scan tree.
  OutputGuard(const std::wstring& outputFolder, const std::wstring& documentName);

  /// Opens the output folder, which must exist by now. Throws Failure if it is not the folder that
  /// the constructor resolved.
  void enterFolder();

  /// Throws Failure if another folder has replaced the output folder.
  void requireFolder() const { held_->requireAt(folderText_); }

  /// Returns the existing file at the path of an output file, if any. Throws Failure if the file
  /// would be inside the scan tree or outside the output folder, or if another folder has replaced
  /// the output folder. Makes two system calls, unless the name is a link or contains a separator.
  std::optional<FileIdentity> check(const std::wstring& file) const;

 private:
  bool isDirectlyInFolder(const std::wstring& file) const;
  void checkPlace(const std::wstring& file) const;
  void requireOutsideScanTree(const Place& place, const std::wstring& path) const;

  std::wstring folderText_;
  std::vector<Place> scanTree_;
  Place outputFolder_;
  std::optional<HeldFolder> held_;
};

/// The places of the current batch's scans. They are resolved while the scans are accessible, so
/// that they are still known after their disk has disappeared.
class ScansOfBatch {
 public:
  /// @param subFolders  the names of all sub-folders of the batch.
  explicit ScansOfBatch(const std::vector<std::wstring>& subFolders);

  /// Throws Failure if `folder` is, contains or is inside the scan tree, or contains the program's
  /// folder. If the places of the scans could not be resolved, throws for every folder.
  void requireDeletable(const std::wstring& folder) const;

 private:
  std::vector<Place> roots_;
  std::wstring unknown_;  // why the roots are not known; empty if they are
};

}  // namespace orvane
