#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "foundation/Outcome.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// The one rule for the output type and the compression of a page: sets its codes by its depth and
/// by `choice`, in the order in which the savers set them.
void setCodes(PageToSave& page, const SaveChoice& choice);

/// Sets the codes of a TIFF save without factors: Group 4 or JPEG by depth, or uncompressed.
void setTiffCodesByDepth(PageToSave& page, bool bCompression);

/// Saves a page as `SavePDF` or `SaveImage` does (see below), according to `choice.asPdf`.
/// @param beforeWriting  called when the page has been loaded, which can take long. If it throws,
/// nothing is created and the save fails.
Outcome savePage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
                 const std::wstring& sSaveFilePath, const SaveChoice& choice, bool bSaveMultiPage,
                 const std::function<void()>& beforeWriting);

/// Sets the target and creates its folder; an empty path is the source file itself.
void setTarget(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath);

}  // namespace orvane

/// The page savers. Every routine catches its own failures, logs them and returns false (or a count
/// of 1).
namespace orvane::mdlImageProcess {

/// Writes page `PageNum`, from 1, of `ImagePath` as TIFF or, for a page of more than 1 bit under a
/// name that ends in ".jpg" (any case), as JPEG. The target's folder is created. An empty
/// `sSaveFilePath` saves over the source.
/// @param bCompression  false: LZW TIFF at every depth.
/// @param CompressionRatios  0, 1 or 2 selects the JPEG factors; any other value keeps the last
/// pair.
/// @param bSaveMultiPage  true: adds the page at the end of the target.
/// @return true when the page was written and `ImagError` is 0 after it. The instance is left
/// empty.
bool SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
               const std::wstring& sSaveFilePath, bool bCompression, std::int16_t CompressionRatios,
               bool bSaveMultiPage);

/// Writes one page as PDF; the parameters are those of `SaveImage`, except that without
/// compression the samples are stored plain.
bool SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
             const std::wstring& sSaveFilePath, bool bCompression, std::int16_t CompressionRatios,
             bool bSaveMultiPage);

/// The number of pages of a file. An answer of exactly 1 of the first instance is asked again of
/// the second, whose answer then counts. A failure is logged and counts as 1.
std::int16_t TifPagesCount(ImagingEngine& ImgFirst, ImagingEngine& ImgSecond,
                           const std::wstring& sFilePath);

/// `SaveImageEx2` under the name that hosts call.
bool SaveImageEx(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath, bool bCompression,
                 bool bSaveMultiPage);

/// Saves, as TIFF, the page that the instance holds; an empty `sSaveFilePath` saves over its
/// source. The page stays loaded and `ImagError` is not looked at: only a thrown failure gives
/// false.
bool SaveImageEx2(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath, bool bCompression,
                  bool bSaveMultiPage);

}  // namespace orvane::mdlImageProcess
