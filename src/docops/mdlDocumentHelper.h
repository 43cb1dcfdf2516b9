#pragma once

#include <cstdint>
#include <string>

#include "docops/DispatchObject.h"
#include "imaging/ImagingEngine.h"

/// The document operations on the disk. Documents are those of the current batch (`gBatchFolder`).
/// Every routine catches its own failures, logs them and answers false or an empty text.

namespace orvane::mdlDocumentHelper {

/// Makes the document `sNewDocumentID` from the first two items of `aryMergedDoc`: the pages of the
/// first one's list, then those of the second one's, copied byte for byte; no page is encoded anew,
/// so the instances have nothing to do but to lose an old error. A page keeps its name where that
/// is free; a page listed twice stands twice. The sources stay as they are; a new document that is
/// one of them, in whatever spelling or through a link, is refused. The pages are on the disk
/// before the new document gets its page list, in one step: a failure, or the end of the process at
/// any moment, leaves no document behind, and an older document of that name as it was. Once it is
/// replaced, its pages are deleted.
/// @return true when the new document is there; false without a word for an empty name and for a
///   list that is absent or has fewer than two items.
bool MergeDocument(ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                   const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc);

/// Has a place in the interface and does nothing; always false.
bool MergeDocumentFor奇偶排序(const std::wstring& sNewDocumentID, const DispatchList* aryMergedDoc,
                              bool MergeDirectionForBack);

/// Removes page `iPageNum`, from 1, from a multi-page file. The only page of a file is refused.
bool DeletePage(ImagingEngine& ImgDelete, const std::wstring& sFileName, std::int16_t iPageNum);

/// Deletes the folder of a document with all it holds. Only a direct child of the batch folder is
/// ever deleted: false for an empty name, ".", ".." and a name with a separator.
bool DeleteDocumentEx(const std::wstring& sDocumentID);

/// `sDocumentID` itself when no document has that name, else the first free one of `sDocumentID` +
/// "_" + a number from `iStartIndex` to 1000; empty when there is none. Nothing is reserved.
std::wstring MakeOnlyOneFileName(const std::wstring& sDocumentID, std::int16_t iStartIndex = 2);

}  // namespace orvane::mdlDocumentHelper
