#include "docstore/Document.h"

#include <exception>
#include <utility>

#include "docstore/ScanTree.h"
#include "docstore/document_failures.h"
#include "docstore/page_list_text.h"
#include "foundation/ansi_text.h"
#include "foundation/existing_path.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/numbers.h"

namespace orvane {

using mdlFolderAndFile::FileDelete;
using mdlFolderAndFile::FileExist;
using mdlFolderAndFile::fileSystem;
using mdlFolderAndFile::RenameFile;

bool Document::LoadDocument(const std::wstring& sDocName) {
  sDocFolder_ = GetDocumentPath(sDocName);
  sDocName_ = sDocName;
  return withFailuresLogged(L"InitDocument-", [this] {
    readPageList(sDocName_, pages_);
    return true;
  });
}

bool Document::CreateDocument(const std::wstring& sDocName) {
  return withFailuresLogged(L"CreateDocument-", [&] {
    sDocName_ = sDocName;
    sDocFolder_ = GetDocumentPath(sDocName);
    pages_.emplace();
    return true;
  });
}

bool Document::SaveDocument() {
  if (sDocFolder_.empty()) {
    return failInLog(L"InitDocument-文档名【" + sDocName_ + L"】文档路径不存在");
  }
  return withFailuresLogged(L"SaveDocument-", [&] {
    // Under the name that it was read by, so that no second one comes to lie beside a DOC.DAT.
    const std::wstring dataFile = existingPath(GetDocDataPath(sDocName_));
    const std::wstring backupFile = existingPath(dataFile + L"bak");
    try {
      writePages(dataFile, backupFile);
    } catch (const std::exception&) {
      // A data file that is there is the old one, which never moved: a write that fails leaves
      // none. A rename would begin with its deletion.
      if (!FileExist(dataFile)) RenameFile(backupFile, dataFile);
      throw;
    }
    return true;
  });
}

void Document::writePages(const std::wstring& dataFile, const std::wstring& backupFile) const {
  RenameFile(dataFile, backupFile);  // a document that is new has nothing to rename
  fileSystem().WriteFile(dataFile, toAnsiStrict(pageListText(pages())));
  if (FileExist(dataFile)) {
    FileDelete(backupFile);
  } else {
    RenameFile(backupFile, dataFile);
  }
}

std::wstring Document::GetPage(std::int16_t iPageIndex) const {
  std::wstring name;
  withFailuresLogged(L"GetPage-", [&] {
    const PageList& list = pages();
    const bool isPage = iPageIndex >= 1 && static_cast<std::size_t>(iPageIndex) <= list.size();
    if (isPage) name = list[static_cast<std::size_t>(iPageIndex) - 1];
    return isPage;
  });
  return name;
}

std::int16_t Document::PageCount() const {
  return toInt16(static_cast<double>(pages().size()));
}

const Document::PageList& Document::pages() const {
  if (!pages_) throw Failure("the document has no page list");
  return *pages_;
}

Document::PageList& Document::pages() {
  return const_cast<PageList&>(std::as_const(*this).pages());
}

}  // namespace orvane
