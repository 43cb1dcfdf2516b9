#include "export/ScanTreeGuard.h"

#include <algorithm>

#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/resolved_place.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/path_text.h"
#include "foundation/program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// Batches and documents may themselves be links to another disk, so the tree has several roots.
std::vector<fs::path> scanTreeOfBatch() {
  return {resolvedPlace(programFolder() + L"\\Batchs"), resolvedPlace(gBatchFolder)};
}

std::vector<fs::path> scanTreeOfDocument(const std::wstring& documentName) {
  std::vector<fs::path> roots = scanTreeOfBatch();
  roots.push_back(resolvedPlace(GetDocumentPath(documentName)));
  return roots;
}

std::vector<fs::path> scanTreeOfAllDocuments() {
  std::vector<fs::path> roots = scanTreeOfBatch();
  for (const std::wstring& name : mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder)) {
    roots.push_back(resolvedPlace(GetDocumentPath(name)));
  }
  return roots;
}

bool liesInAny(const fs::path& place, const std::vector<fs::path>& roots) {
  return std::any_of(roots.begin(), roots.end(),
                     [&](const fs::path& root) { return liesWithin(place, root); });
}

bool holdsAny(const fs::path& place, const std::vector<fs::path>& roots) {
  return std::any_of(roots.begin(), roots.end(),
                     [&](const fs::path& root) { return liesWithin(root, place); });
}

void requireDeletable(const std::wstring& folder) {
  const fs::path place = resolvedPlace(folder);
  const std::vector<fs::path> scanTree = scanTreeOfAllDocuments();
  if (liesInAny(place, scanTree) || holdsAny(place, scanTree) ||
      liesWithin(resolvedPlace(programFolder()), place)) {
    throw Failure(L"输出文件夹含有程序或扫描件，不删除：" + folder);
  }
}

}  // namespace

bool isFolderName(const std::wstring& name) {
  constexpr std::wstring_view kForbidden(L"\\/\0", 3);
  return !name.empty() && name != L"." && name != L".." &&
         name.find_first_of(kForbidden) == std::wstring::npos;
}

OutputGuard::OutputGuard(const std::wstring& outputFolder, const std::wstring& documentName)
    : outputFolder_(resolvedPlace(outputFolder)), scanTree_(scanTreeOfDocument(documentName)) {
  requireOutsideScanTree(outputFolder_, outputFolder);
}

void OutputGuard::check(const std::wstring& file) const {
  requireOutsideScanTree(resolvedPlace(file), file);
  const fs::path folder = resolvedPlace(pathText(nativePath(file).parent_path()));
  requireOutsideScanTree(folder, file);
  if (!liesWithin(folder, outputFolder_)) throw Failure(L"输出文件不在输出文件夹内：" + file);
}

void OutputGuard::requireOutsideScanTree(const fs::path& place, const std::wstring& path) const {
  if (liesInAny(place, scanTree_)) throw Failure(L"输出位置在扫描件文件夹内，不能导出：" + path);
}

void deleteBatchOutputFolder(const std::wstring& SavePath, const std::wstring& BatchID) {
  try {
    if (!isFolderName(BatchID)) throw Failure(L"批次名不能作文件夹名，不删除：" + BatchID);
    const std::wstring folder = batchOutputFolder(SavePath, true, BatchID);
    requireDeletable(folder);
    mdlFolderAndFile::FolderDelete(folder);
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"RunOutPutBatch-" + description(failure), kApplicationTitle);
  }
}

}  // namespace orvane
