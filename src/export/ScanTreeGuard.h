#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// The scan tree is read and never changed, whatever the settings say. These guards stand in front
/// of everything that the export creates or deletes.
namespace orvane {

/// True for a text that can name one folder below another: not empty, not "." or "..", without a
/// separator or a NUL.
bool isFolderName(const std::wstring& name);

/// Keeps the output of one document out of the scan tree and inside its output folder.
class OutputGuard {
 public:
  /// @param outputFolder  where the document goes; need not exist yet.
  /// @param documentName  a document of the current batch.
  /// Throws Failure when the folder lies in the scan tree.
  OutputGuard(const std::wstring& outputFolder, const std::wstring& documentName);

  /// Throws Failure when an output file would lie in the scan tree or outside the output folder.
  void check(const std::wstring& file) const;

 private:
  void requireOutsideScanTree(const std::filesystem::path& place, const std::wstring& path) const;

  std::filesystem::path outputFolder_;
  std::vector<std::filesystem::path> scanTree_;
};

/// Deletes `SavePath\BatchID` with all it holds, after a document of the current batch has failed.
/// A folder that is, holds or lies in the scan tree, or holds the program's folder, stays, with a
/// log line that says so. A failure of the delete itself is silent.
void deleteBatchOutputFolder(const std::wstring& SavePath, const std::wstring& BatchID);

}  // namespace orvane
