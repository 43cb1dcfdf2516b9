#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imaging/ImagingEngine.h"

namespace orvane {

/// An object of the host. Its properties are looked up by name when they are needed.
class DispatchObject {
 public:
  virtual ~DispatchObject() = default;

  /// The text of the property `sName`. Throws Failure if the object does not have it.
  virtual std::wstring property(const std::wstring& sName) const = 0;
};

/// An ordered list of such objects, owned by the host.
using DispatchList = std::vector<const DispatchObject*>;

/// The operations on documents of the current batch (`gBatchFolder`). A routine that fails logs the
/// failure and returns false or an empty text.
namespace mdlDocumentHelper {

/// Creates the document `sNewDocumentID` from the first two items of `aryMergedDoc`: first the
/// pages of the first document, then those of the second, in the order of their page lists. The
/// pages are copied byte for byte; the instances are not used, except that an old error of
/// `ImgPageCount` is cleared. A page keeps its name if it is free; otherwise it gets a number. A
/// page that is listed twice is listed twice in the new document too. The sources are not changed.
/// If the new document is one of them, in any spelling or through a link, the merge is refused.
///
/// The pages are synced to the disk before the page list is written in one step. After a failure or
/// a crash there is no new document, and an older document of that name is unchanged. The pages of
/// an older document are deleted after it has been replaced.
/// @return true if the new document exists. For an empty name, and for a list that is nullptr or
///   has fewer than two items, false without a log line.
bool MergeDocument(ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                   const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc);

/// Does nothing and returns false.
bool MergeDocumentFor奇偶排序(const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc,
                              bool MergeDirectionForBack);

/// Removes page `iPageNum`, from 1, from a multi-page file. The only page cannot be removed.
bool DeletePage(ImagingEngine& ImgDelete, const std::wstring& sFileName, std::int16_t iPageNum);

/// Deletes the folder of a document and its contents. Deletes only direct children of the batch
/// folder: returns false for an empty name, ".", ".." and a name with a separator. The page list
/// goes first: a crash leaves the whole document or none, but perhaps some of its files.
bool DeleteDocumentEx(const std::wstring& sDocumentID);

/// `sDocumentID` itself if no document has that name; otherwise the first free name that consists
/// of it, "_" and a number from `iStartIndex` to 1000; empty if there is none. A name that would be
/// too long for a folder is shortened in front of the "_". The name is not reserved.
std::wstring MakeOnlyOneFileName(const std::wstring& sDocumentID, std::int16_t iStartIndex = 2);

}  // namespace mdlDocumentHelper

}  // namespace orvane
