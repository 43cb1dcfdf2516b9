#pragma once

#include <cstdint>
#include <string>

#include "export/ScanTreeGuard.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// Follows a document on its way out.
class ExportListener {
 public:
  virtual ~ExportListener() = default;

  /// Page `page` of `pageCount`, from 1, is about to be written.
  virtual void beginPage(int /*page*/, int /*pageCount*/) {}
  /// `older` stands under the name of a new file, which is about to replace it.
  virtual void replace(const FileIdentity& /*older*/, const std::wstring& /*path*/) {}
  /// A file is there as a whole, with so many pages in it. May throw, and so fail the document.
  virtual void addFile(const std::wstring& /*file*/, int /*pages*/) {}
  /// The page has been written.
  virtual void endPage() {}
};

namespace mdlDocumentHelper {

/// Exports one document of the current batch (`gBatchFolder`) to one folder, as one file a page or
/// as one multi-page file. Older files of the same names are replaced. A failure ends the export,
/// is logged, and takes the file being written with it: the page's, or the whole multi-page file;
/// page files written before it stay. An output in the scan tree, or outside `SavePath`, is refused
/// before anything is created or deleted, and so is every page once another folder has taken the
/// output folder's place.
/// @param ImgMerge, ImgPageCount  only cleared, when their last error is set.
/// @param ImgControl  the instance that saves the pages; left empty.
/// @param DocumentID  the document's name, which is the name of its folder.
/// @param SaveFileType  0 TIFF, 1 JPEG, 2 PDF. A multi-page JPEG has PDF content.
/// @param IsPageFile  true: one file a page.
/// @param CompressionType  0 compresses, any other value does not.
/// @param CompressionRatios  0, 1 or 2: selects the JPEG factors.
/// @param SavePath  the output folder, with or without a final `\`; created when missing.
/// @param SubFolderType  the mask of the page number.
/// @param NewDocumentID  the front of the output names; may be empty.
/// @param listener  is told of each step; may be null.
/// @return true when every page was written, also when there is none.
bool SaveAsDocument(ImagingEngine& ImgMerge, ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                    const std::wstring& DocumentID, std::int16_t SaveFileType, bool IsPageFile,
                    std::int16_t CompressionType, std::int16_t CompressionRatios,
                    const std::wstring& SavePath, const std::wstring& SubFolderType,
                    const std::wstring& NewDocumentID, ExportListener* listener = nullptr);

}  // namespace mdlDocumentHelper
}  // namespace orvane
