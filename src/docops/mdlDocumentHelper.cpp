#include "docops/mdlDocumentHelper.h"

#include <algorithm>
#include <climits>
#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/durable_file.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "imaging/ImagingEngine.h"

namespace orvane::mdlDocumentHelper {
namespace {

void logFailure(const std::wstring& message) {
  mdlFolderAndFile::LogWrite(L"DocumentHelper-" + message, kApplicationTitle);
}

std::wstring documentIdOf(const DispatchObject* item) {
  if (item == nullptr) throw Failure("an item of the list is no object");
  return item->property(L"DocumentID");
}

void requireDocumentName(const std::wstring& name) {
  if (!isFolderName(name)) throw Failure(name + L": cannot name a document");
}

// A document may have an empty list, which `readPageList` refuses.
std::vector<std::wstring> pagesOf(const std::wstring& sDocumentID) {
  const std::wstring list = existingPath(GetDocDataPath(sDocumentID));
  if (mdlFolderAndFile::fileSystem().FileExists(list) &&
      trimmed(fromAnsi(mdlFolderAndFile::fileSystem().ReadFile(list)), L" ").empty()) {
    return {};
  }
  std::optional<std::vector<std::wstring>> pages;
  readPageList(sDocumentID, pages);
  return std::move(pages).value_or(std::vector<std::wstring>());
}

// `front` and `end` as one name, of which so much of `front` is left out that a file named so, with
// `extension`, can be created on every disk.
std::wstring nameThatFits(std::wstring front, const std::wstring& end,
                          const std::wstring& extension = {}) {
  while (!front.empty() && nativePath(front + end + extension).size() > NAME_MAX) front.pop_back();
  return front + end;
}

/// The document that a merge creates. Only a folder with a `Doc.dat` is a document. The pages are
/// therefore written first, under free names, and the page list last, in one step: a run sees
/// either the older document of that name, or none, or the whole new one. After a failure,
/// `remove` leaves what was there before.
class MergedDocument {
 public:
  explicit MergedDocument(const std::wstring& sNewDocumentID)
      : folder_(existingPath(GetDocumentPath(sNewDocumentID))),
        list_(existingPath(folder_ + L"Doc.dat")),
        isNewFolder_(!files().FolderExists(folder_)) {
    if (isNewFolder_) {
      files().CreateFolder(folder_);
    } else if (files().FileExists(list_)) {
      noteOldPages(pagesOf(sNewDocumentID));
    }
  }

  /// Appends the pages of a document. A page that is listed twice becomes one file, listed twice.
  void add(const std::wstring& sDocumentID, const std::vector<std::wstring>& pages) {
    std::map<std::wstring, std::wstring> copied;
    for (const std::wstring& page : pages) {
      const auto [name, isNew] = copied.try_emplace(page);
      if (isNew) name->second = copyPage(GetPagePath(sDocumentID, page), page);
      pages_.push_back(name->second);
      windowServices().yield();
    }
  }

  /// Syncs the pages to the disk and lists them. The pages of an older document are deleted.
  void finish() {
    for (const std::wstring& file : newFiles_) syncEntry(file);
    syncEntry(folder_);
    syncEntry(gBatchFolder);
    files().WriteFile(list_, toAnsiStrict(pageListText(pages_)));
    for (const std::wstring& file : oldFiles_) deleteSilently(file);
  }

  /// Removes what was added, of a document that was not finished.
  void remove() const {
    for (const std::wstring& file : newFiles_) deleteSilently(file);
    if (isNewFolder_) mdlFolderAndFile::FolderDelete(folder_);
  }

 private:
  static FileSystemObject& files() { return mdlFolderAndFile::fileSystem(); }

  static void deleteSilently(const std::wstring& file) noexcept {
    try {
      files().DeleteFile(file);
    } catch (const std::exception&) {
      // No page list contains it, so it is never read.
    }
  }

  // Stored as spelled on the disk, so that a new page is not mistaken for one of them.
  void noteOldPages(const std::vector<std::wstring>& pages) {
    for (const std::wstring& page : pages) {
      const std::wstring file = existingPath(folder_ + page + L".tif");
      if (isFolderName(page) && files().FileExists(file)) oldFiles_.push_back(file);
    }
  }

  std::wstring freePageName(std::wstring page) const {
    std::ranges::replace_if(
        page, [](wchar_t c) { return c == L'\\' || c == L'/'; }, L'_');
    std::wstring name = nameThatFits(page, L"", L".tif");
    for (int number = 2; isTaken(folder_ + name + L".tif"); ++number) {
      name = nameThatFits(page, L"_" + std::to_wstring(number), L".tif");
    }
    return name;
  }

  static bool isTaken(const std::wstring& file) {
    return mdlFolderAndFile::FileExist(file) || mdlFolderAndFile::FolderExist(file);
  }

  std::wstring copyPage(const std::wstring& source, const std::wstring& page) {
    std::wstring name = freePageName(page);
    newFiles_.push_back(folder_ + name + L".tif");
    if (!mdlFolderAndFile::DialogFileCopy(source, newFiles_.back())) {
      newFiles_.pop_back();
      throw Failure(source + L": the page cannot be copied");
    }
    return name;
  }

  std::wstring folder_, list_;  ///< as spelled on the disk
  bool isNewFolder_;
  std::vector<std::wstring> pages_;
  std::vector<std::wstring> oldFiles_;  ///< the pages of the older document
  std::vector<std::wstring> newFiles_;  ///< the copies of the pages
};

void merge(const std::wstring& sNewDocumentID, const std::wstring& sFirstID,
           const std::wstring& sSecondID) {
  for (const std::wstring& name : {sNewDocumentID, sFirstID, sSecondID}) requireDocumentName(name);
  for (const std::wstring& source : {sFirstID, sSecondID}) {
    if (mdlFolderAndFile::fileSystem().IsSamePlace(GetDocumentPath(sNewDocumentID),
                                                   GetDocumentPath(source))) {
      throw Failure(sNewDocumentID + L": a document cannot be merged into itself");
    }
  }
  const std::vector<std::wstring> first = pagesOf(sFirstID), second = pagesOf(sSecondID);
  toInt16(static_cast<double>(first.size() + second.size()));  // a longer list could not be loaded
  MergedDocument merged(sNewDocumentID);
  try {
    merged.add(sFirstID, first);
    merged.add(sSecondID, second);
    merged.finish();
  } catch (const std::exception&) {
    merged.remove();
    throw;
  }
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
    logFailure(L"MergeDocument-" + description(failure));
    return false;
  }
}

bool MergeDocumentFor奇偶排序(const std::wstring& /*sNewDocumentID*/,
                              const DispatchList* /*aryMergedDoc*/,
                              bool /*MergeDirectionForBack*/) {
  return false;
}

namespace {

// Keeps the picture, unlike ClearControl.
void unload(ImagingEngine& ImgDelete) {
  ImgDelete.SourceFile(L"");
  ImgDelete.Refresh();
}

}  // namespace

bool DeletePage(ImagingEngine& ImgDelete, const std::wstring& sFileName, std::int16_t iPageNum) {
  try {
    if (ImgDelete.ImagError() != 0) unload(ImgDelete);
    ImgDelete.DeletePageFromFile(sFileName, iPageNum);
    if (ImgDelete.ImagError() == 0) return true;
    unload(ImgDelete);
    return false;
  } catch (const std::exception& failure) {
    const std::int32_t error = ImgDelete.ImagError();
    logFailure(L"DeletePage-Err:" + description(failure) + L" ImgDelete.ImagError=" +
               std::to_wstring(error));
    if (error != 0) unload(ImgDelete);
    return false;
  }
}

namespace {

// Without its page list a folder is no document. It goes first, so that a crash during the removal
// does not leave a document without some of its pages. Of a link, only the link is removed.
void deletePageList(const std::wstring& sDocumentID) {
  const std::wstring folder = existingPath(GetDocumentPath(sDocumentID));
  if (std::filesystem::is_symlink(std::filesystem::path(nativePath(folder)).parent_path())) return;
  mdlFolderAndFile::FileDelete(folder + L"Doc.dat");
  trySyncFolder(folder);
}

}  // namespace

bool DeleteDocumentEx(const std::wstring& sDocumentID) {
  try {
    if (gBatchFolder.empty() || !isFolderName(sDocumentID)) return false;
    deletePageList(sDocumentID);
    const bool isDeleted = mdlFolderAndFile::FolderDelete(GetDocumentPath(sDocumentID));
    trySyncFolder(gBatchFolder);
    return isDeleted;
  } catch (const std::exception& failure) {
    logFailure(L"DeleteDocumentEx-Err:" + description(failure));
    return false;
  }
}

std::wstring MakeOnlyOneFileName(const std::wstring& sDocumentID, std::int16_t iStartIndex) {
  constexpr int kLastIndex = 1000;
  try {
    const auto isTaken = [](const std::wstring& name) {
      return mdlFolderAndFile::FolderExist(GetDocumentPath(name));
    };
    if (!isTaken(sDocumentID)) return sDocumentID;
    for (int index = iStartIndex; index <= kLastIndex; ++index) {
      std::wstring candidate = nameThatFits(sDocumentID, L"_" + std::to_wstring(index));
      if (!isTaken(candidate)) return candidate;
    }
    return {};
  } catch (const std::exception& failure) {
    logFailure(L"MakeOnlyOneFileName-" + description(failure));
    return {};
  }
}

}  // namespace orvane::mdlDocumentHelper
