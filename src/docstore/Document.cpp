#include "docstore/Document.h"

#include <exception>
#include <fcntl.h>
#include <utility>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/durable_file.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/text_encoding.h"

namespace orvane {

using mdlFolderAndFile::DialogFileCopy;
using mdlFolderAndFile::FileDelete;
using mdlFolderAndFile::FileExist;
using mdlFolderAndFile::fileSystem;
using mdlFolderAndFile::RenameFile;

namespace {

// Logs one line and returns false.
bool failInLog(const std::wstring& text) {
  mdlFolderAndFile::LogWrite(text, L"Document");
  return false;
}

// The result of `operation`. A failure in it is logged as one line, `prefix` and its text, and
// gives false.
template <typename Operation>
bool withFailuresLogged(const std::wstring& prefix, Operation operation) {
  try {
    return operation();
  } catch (const std::exception& failure) {
    return failInLog(prefix + description(failure));
  }
}

}  // namespace

bool Document::LoadDocument(const std::wstring& sDocName) {
  return load(sDocName).ok;
}

Outcome Document::load(const std::wstring& sDocName) {
  sDocFolder_ = GetDocumentPath(sDocName);
  sDocName_ = sDocName;
  try {
    readPageList(sDocName_, pages_);
    return {};
  } catch (const std::exception& failure) {
    const std::wstring message = L"InitDocument-" + description(failure);
    failInLog(message);
    return Outcome::failed(message);
  }
}

bool Document::CreateDocument(const std::wstring& sDocName) {
  return withFailuresLogged(L"CreateDocument-", [&] {
    sDocName_ = sDocName;
    sDocFolder_ = GetDocumentPath(sDocName);
    pages_.emplace();
    return true;
  });
}

namespace {

// A failed write leaves no data file, so an existing one is whole: the new one, or the old one.
void endBackup(const std::wstring& dataFile, const std::wstring& backupFile) {
  if (FileExist(dataFile)) {
    FileDelete(backupFile);
  } else {
    RenameFile(backupFile, dataFile);
  }
}

}  // namespace

bool Document::SaveDocument() {
  if (sDocFolder_.empty()) {
    return failInLog(L"InitDocument-文档名【" + sDocName_ + L"】文档路径不存在");
  }
  return withFailuresLogged(L"SaveDocument-", [&] {
    // Under the spelling that is on the disk, so that a DOC.DAT gets no second file beside it.
    const std::wstring dataFile = existingPath(GetDocDataPath(sDocName_));
    const std::wstring backupFile = existingPath(dataFile + L"bak");
    try {
      writePages(dataFile, backupFile);
    } catch (const std::exception&) {
      endBackup(dataFile, backupFile);
      throw;
    }
    endBackup(dataFile, backupFile);
    return true;
  });
}

void Document::writePages(const std::wstring& dataFile, const std::wstring& backupFile) const {
  // The old file stays in its place until the new one replaces it, so that a crash cannot leave
  // none. A read-only file cannot be replaced, only moved.
  if (FileDescriptor::tryToOpen(dataFile, O_WRONLY | O_NONBLOCK)) {
    DialogFileCopy(dataFile, backupFile);
    fileSystem().WriteFile(dataFile, toAnsiStrict(pageListText(pages())));
  } else {
    RenameFile(dataFile, backupFile);  // fails for a new document, which has nothing to rename
    fileSystem().WriteFile(dataFile, toAnsiStrict(pageListText(pages())));
    syncWithFolders(dataFile);  // the folder of a new document is new
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

// The operations below change the page list in memory only.

bool Document::AddPage(const std::wstring& sPageName, std::int16_t iInsertTo) {
  return withFailuresLogged(L"AddPage-", [&] {
    PageList& list = pages();
    if (iInsertTo < 0) {
      list.push_back(sPageName);
    } else {
      const std::ptrdiff_t index = indexOf(iInsertTo);
      list.insert(list.begin() + index, sPageName);
    }
    return true;
  });
}

bool Document::RemovePage(std::int16_t iPageIndex) {
  return withFailuresLogged(L"RemovePage-", [&] {
    const std::ptrdiff_t index = indexOf(iPageIndex);
    pages().erase(pages().begin() + index);
    return true;
  });
}

bool Document::MovePage(std::int16_t iSourcePageNum, std::int16_t iInsertBefore) {
  return withFailuresLogged(L"MovePage-", [&] {
    // A page is in front of its successor already; the two are exchanged instead.
    if (iInsertBefore - iSourcePageNum == 1) std::swap(iSourcePageNum, iInsertBefore);
    const std::wstring name = pages()[static_cast<std::size_t>(indexOf(iSourcePageNum))];
    indexOf(iInsertBefore);  // refuses a wrong position before anything has changed

    if (!AddPage(name, iInsertBefore)) return failInLog(L"MovePage-插入页失败");
    const int oldPosition = iSourcePageNum > iInsertBefore ? iSourcePageNum + 1 : iSourcePageNum;
    if (!RemovePage(toInt16(oldPosition))) {
      return failInLog(L"MovePage-插入成功，但删除原来页时出错");
    }
    return true;
  });
}

std::wstring Document::RemovePageForName(const std::wstring& sPageName) {
  const bool done = withFailuresLogged(L"RemovePageForName-", [&] {
    std::erase(pages(), sPageName);
    return true;
  });
  return done ? L"True" : L"False";
}

std::ptrdiff_t Document::indexOf(std::int16_t position) const {
  const bool isPage = position >= 1 && static_cast<std::size_t>(position) <= pages().size();
  if (!isPage) throw Failure("there is no page " + std::to_string(position));
  return position - 1;
}

}  // namespace orvane
