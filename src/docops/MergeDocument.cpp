#include <exception>
#include <map>
#include <set>
#include <utility>

#include "docops/mdlDocumentHelper.h"
#include "docstore/Document.h"
#include "docstore/ScanTree.h"
#include "export/ScanTreeGuard.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "imaging/ImagingInstances.h"

namespace orvane::mdlDocumentHelper {
namespace {

std::wstring documentIdOf(const DispatchObject* item) {
  if (item == nullptr) throw Failure("an item of the list is no object");
  return item->property(L"DocumentID");
}

/// A document in the making, in a folder of its own beside the one whose name it will take. Unless
/// it took that name the folder goes with the object.
class DocumentInTheMaking {
 public:
  explicit DocumentInTheMaking(const std::wstring& sNewDocumentID)
      : name_(MakeOnlyOneFileName(L"~" + sNewDocumentID)) {
    if (name_.empty()) throw Failure(sNewDocumentID + L": no name is free for its making");
    mdlFolderAndFile::fileSystem().CreateFolder(GetDocumentPath(name_));
    document_.CreateDocument(name_);
  }
  ~DocumentInTheMaking() { mdlFolderAndFile::FolderDelete(GetDocumentPath(name_)); }
  DocumentInTheMaking(const DocumentInTheMaking&) = delete;
  DocumentInTheMaking& operator=(const DocumentInTheMaking&) = delete;

  /// Adds the pages of `sDocumentID` behind those that are there.
  void addPagesOf(const std::wstring& sDocumentID) {
    Document source;
    if (!source.LoadDocument(sDocumentID)) {
      throw Failure(sDocumentID + L": its page list cannot be read");
    }
    std::map<std::wstring, std::wstring> copied;  // a page listed twice is one file, listed twice
    const int pageCount = source.PageCount();
    for (int index = 1; index <= pageCount; ++index) {
      const std::wstring page = source.GetPage(static_cast<std::int16_t>(index));
      const auto [name, isNew] = copied.try_emplace(page, freePageName(page));
      if (isNew) copyPage(GetPagePath(sDocumentID, page), name->second);
      if (!document_.AddPage(name->second)) throw Failure(name->second + L": cannot be listed");
      windowServices().yield();
    }
  }

  /// Writes the page list and takes the name; what had it before is deleted.
  void takeName(const std::wstring& sNewDocumentID) {
    FileSystemObject& files = mdlFolderAndFile::fileSystem();
    files.CreateFile(GetDocDataPath(name_));
    if (!document_.SaveDocument()) throw Failure(name_ + L": its page list cannot be written");
    files.MoveFolder(gBatchFolder + L"\\" + name_, gBatchFolder + L"\\" + sNewDocumentID);
  }

 private:
  std::wstring freePageName(const std::wstring& page) const {
    std::wstring name = page;
    for (int number = 2; pageNames_.contains(name); ++number) {
      name = page + L"_" + std::to_wstring(number);
    }
    return name;
  }

  void copyPage(const std::wstring& source, const std::wstring& name) {
    if (!mdlFolderAndFile::DialogFileCopy(source, GetPagePath(name_, name))) {
      throw Failure(source + L": the page cannot be copied");
    }
    pageNames_.insert(name);
  }

  std::wstring name_;
  Document document_;
  std::set<std::wstring> pageNames_;
};

void merge(const std::wstring& sNewDocumentID, const std::wstring& sFirstID,
           const std::wstring& sSecondID) {
  if (!isFolderName(sNewDocumentID)) throw Failure(sNewDocumentID + L": cannot name a document");
  if (sNewDocumentID == sFirstID || sNewDocumentID == sSecondID) {
    throw Failure(sNewDocumentID + L": a document cannot be merged into itself");
  }
  DocumentInTheMaking merged(sNewDocumentID);
  merged.addPagesOf(sFirstID);
  merged.addPagesOf(sSecondID);
  merged.takeName(sNewDocumentID);
}

}  // namespace

bool MergeDocument(ImagingEngine& /*ImgControl*/, ImagingEngine& ImgPageCount,
                   const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc) {
  try {
    if (ImgPageCount.ImagError() != 0) ClearControl(ImgPageCount);
    if (sNewDocumentID.empty() || aryMergedDoc == nullptr || aryMergedDoc->size() < 2) return false;
    merge(sNewDocumentID, documentIdOf((*aryMergedDoc)[0]), documentIdOf((*aryMergedDoc)[1]));
    return mdlFolderAndFile::FileExist(GetDocDataPath(sNewDocumentID));
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"DocumentHelper-MergeDocument-" + description(failure),
                               kApplicationTitle);
    return false;
  }
}

bool MergeDocumentFor奇偶排序(const std::wstring& /*sNewDocumentID*/,
                              const DispatchList* /*aryMergedDoc*/,
                              bool /*MergeDirectionForBack*/) {
  return false;
}

}  // namespace orvane::mdlDocumentHelper
