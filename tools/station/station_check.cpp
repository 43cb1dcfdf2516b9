#include "station_check.h"

#include <filesystem>
#include <optional>

#include "docstore/ScanTree.h"
#include "export/ScanTreeGuard.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "imaging/LoadedPage.h"

namespace orvane::station {
namespace {

// Runs one step and records a failure as an obstacle.
template <typename Step>
void tryStep(BatchCheck& check, const std::wstring& prefix, Step step) {
  try {
    step();
  } catch (const std::exception& failure) {
    check.obstacles.push_back(prefix + description(failure));
  }
}

void checkPageFile(BatchCheck& check, const std::wstring& path) {
  ++check.pages;
  tryStep(check, L"", [&] {
    std::error_code missing;  // checkPage reports a missing file
    const std::uintmax_t size = std::filesystem::file_size(nativePath(existingPath(path)), missing);
    if (!missing) check.bytes += size;
    checkPage(path);
  });
}

void checkDocument(BatchCheck& check, const std::wstring& sDocName) {
  std::optional<std::vector<std::wstring>> pages;
  tryStep(check, GetDocumentPath(sDocName) + L": ", [&] { readPageList(sDocName, pages); });
  if (!pages) return;
  ++check.documents;
  for (const std::wstring& page : *pages) checkPageFile(check, GetPagePath(sDocName, page));
}

}  // namespace

BatchCheck checkBatch(const std::wstring& BatchID) {
  BatchCheck check;
  gBatchFolder = programFolder() + L"\\Batchs\\" + BatchID;
  tryStep(check, L"", [&] {
    if (!isFolderName(BatchID)) throw Failure(L"BatchID 不能作文件夹名");
    for (const std::wstring& name : mdlFolderAndFile::fileSystem().SubFolders(gBatchFolder)) {
      tryStep(check, L"", [&] {
        if (isDocument(name)) checkDocument(check, name);
      });
    }
  });
  return check;
}

}  // namespace orvane::station
