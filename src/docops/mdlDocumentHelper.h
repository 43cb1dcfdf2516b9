#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imaging/ImagingEngine.h"

namespace orvane {

/// An object of the host whose properties are looked up by name when they are needed.
class DispatchObject {
 public:
  virtual ~DispatchObject() = default;

  /// The text of the property `sName`. Throws Failure for a name that the object does not have.
  virtual std::wstring property(const std::wstring& sName) const = 0;
};

/// An ordered list of such objects, owned by the host.
using DispatchList = std::vector<const DispatchObject*>;

/// The document operations on the disk. Documents are those of the current batch (`gBatchFolder`).
/// Every routine catches its own failures, logs them and returns false or an empty text.
namespace mdlDocumentHelper {

/// Makes the document `sNewDocumentID` from the first two items of `aryMergedDoc`: the pages of the
/// first one's list, then those of the second one's. The pages are copied byte for byte; of the
/// instances only an old error of `ImgPageCount` is cleared. A page keeps its name where that is
/// free; a page that is listed twice is listed twice again. The sources are not changed; a new
/// document that is one of them, in any spelling or through a link, is refused.
///
/// The pages are synced to the disk before the page list is written, in one step: a failure or a
/// crash leaves no new document, and an older document of that name as it was. The pages of an
/// older document are deleted once it is replaced.
/// @return true when the new document exists; false, without a log line, for an empty name and for
/// a
///   list that is absent or has fewer than two items.
bool MergeDocument(ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                   const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc);

/// Part of the interface only: does nothing and returns false.
bool MergeDocumentFor奇偶排序(const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc,
                              bool MergeDirectionForBack);

/// Removes page `iPageNum`, from 1, from a multi-page file. The only page of a file is refused.
bool DeletePage(ImagingEngine& ImgDelete, const std::wstring& sFileName, std::int16_t iPageNum);

/// Deletes the folder of a document with all its contents. Only a direct child of the batch folder
/// is ever deleted: false for an empty name, ".", ".." and a name with a separator.
bool DeleteDocumentEx(const std::wstring& sDocumentID);

/// `sDocumentID` itself when no document has that name, else the first free one of `sDocumentID` +
/// "_" + a number from `iStartIndex` to 1000; empty when there is none. Nothing is reserved.
std::wstring MakeOnlyOneFileName(const std::wstring& sDocumentID, std::int16_t iStartIndex = 2);

}  // namespace mdlDocumentHelper

}  // namespace orvane
