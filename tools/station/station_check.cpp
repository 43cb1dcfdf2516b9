#include "station_check.h"

#include <filesystem>
#include <system_error>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "foundation/share_out.h"
#include "imaging/PagesAhead.h"

namespace orvane::station {
namespace {

// Runs one step. A failure is returned as an obstacle.
template <typename Step>
std::wstring obstacleOf(const std::wstring& prefix, Step step) {
  try {
    step();
    return {};
  } catch (const std::exception& failure) {
    return prefix + description(failure);
  }
}

void checkPageFile(CheckedPage& page, bool measures) {
  page.obstacle = obstacleOf(L"", [&] {
    std::error_code missing;  // examinePage reports a missing file
    const std::uintmax_t size =
        std::filesystem::file_size(nativePath(existingPath(page.path)), missing);
    if (!missing) page.bytes = size;
    page.facts = examinePage(page.path, measures);
  });
}

CheckedDocument listedDocument(const std::wstring& sDocName) {
  CheckedDocument document{sDocName};
  std::optional<std::vector<std::wstring>> names;
  document.obstacle =
      obstacleOf(GetDocumentPath(sDocName) + L": ", [&] { readPageList(sDocName, names); });
  document.isListed = names.has_value();
  if (!names) return document;
  for (const std::wstring& name : *names) {
    document.pages.push_back({name, GetPagePath(sDocName, name)});
  }
  return document;
}

void addDocuments(BatchCheck& check) {
  for (const std::wstring& name : mdlFolderAndFile::fileSystem().SubFolders(check.folder)) {
    const std::wstring obstacle = obstacleOf(L"", [&] {
      if (isDocument(name)) check.documents.push_back(listedDocument(name));
    });
    if (!obstacle.empty()) check.documents.push_back({name, false, obstacle});
  }
}

}  // namespace

std::vector<Finding> BatchCheck::obstacles() const {
  std::vector<Finding> found;
  if (!obstacle.empty()) found.push_back({.text = obstacle});
  for (const CheckedDocument& document : documents) {
    if (!document.obstacle.empty()) {
      found.push_back({.document = document.name, .text = document.obstacle});
    }
    for (const CheckedPage& page : document.pages) {
      if (page.obstacle.empty()) continue;
      found.push_back({.document = document.name, .page = page.path, .text = page.obstacle});
    }
  }
  return found;
}

BatchCheck checkBatch(const std::wstring& BatchID, bool measures) {
  BatchCheck check{.folder = programFolder() + L"\\Batchs\\" + BatchID};
  gBatchFolder = check.folder;
  check.obstacle = obstacleOf(L"", [&] {
    if (!isFolderName(BatchID)) throw Failure(L"BatchID 不能作文件夹名");
    addDocuments(check);
  });
  std::vector<CheckedPage*> pages;
  for (CheckedDocument& document : check.documents) {
    for (CheckedPage& page : document.pages) pages.push_back(&page);
  }
  shareOut(pages.size(), workersOfMachine(),
           [&](std::size_t i) { checkPageFile(*pages[i], measures); });
  return check;
}

}  // namespace orvane::station
