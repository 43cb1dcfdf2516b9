#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "foundation/WindowServices.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// The conversions of `frmMain`: a multi-page image file becomes another file, or one file a page.
/// `SaveFileType` is 0 TIFF, 1 PDF under the name ".jpg", 2 PDF; `CompressionType` 0 compresses,
/// any other value does not. A page that fails is logged and left out; `ImagError` is not looked
/// at. PDF pages have 200 dots per inch.
class DocumentConversion {
 public:
  DocumentConversion(const ImagingInstances& instances, ProgressList& listProcessLog)
      : instances_(instances), listProcessLog_(listProcessLog) {}

  /// Converts `sImageFilePath` into the one file `sChangedPDFFilePath`, which is made anew, under
  /// the busy pointer. A failure is told in the list. `sBatchErrorLogPath` is not used. A target
  /// that is the source, in whatever spelling and through whatever links, is refused and logged.
  bool ChangeToDocPDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFFilePath,
                      const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                      std::int16_t CompressionType);

  /// Converts `sImageFilePath` into one file a page in the folder `sChangedPDFRootPath`, under the
  /// busy pointer. A failure is told in the list. `sBatchErrorLogPath` is not used. A folder name
  /// that is the source's is refused and logged, for a file of that name would be deleted.
  bool ChangeToPagePDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFRootPath,
                       const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                       std::int16_t CompressionType);

  /// Adds all pages of `PageFilePath` to the end of `SaveFilePath`. Every ".ts" in that path
  /// becomes the extension of `SaveFileType`.
  bool SaveAsDocument(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                      std::int16_t CompressionType, const std::wstring& SaveFilePath);

  /// Saves each page of `PageFilePath` under its number, 001 and so on, in the folder
  /// `SaveRootPath`. A page whose file exists is added to it.
  bool SaveAsPage(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                  std::int16_t CompressionType, const std::wstring& SaveRootPath);

  /// Writes one page as TIFF. An empty `sSaveFilePath` saves over the source.
  static void SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                        std::int16_t PageNum, const std::wstring& sSaveFilePath = {},
                        bool bCompression = false, bool bSaveMultiPage = false);

  /// Writes one page as PDF. An empty `sSaveFilePath` saves over the source.
  static void SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                      std::int16_t PageNum, const std::wstring& sSaveFilePath = {},
                      bool bCompression = false, bool bSaveMultiPage = false);

 private:
  /// A failure of `save` is logged under `source`, with the note as it stands then.
  bool convert(const std::wstring& sImageFilePath, const std::wstring& note,
               const std::wstring& source, const std::function<bool()>& save);
  void tellFailure(const std::wstring& sImageFilePath);
  void savePage(const std::wstring& PageFilePath, int page, std::int16_t SaveFileType,
                std::int16_t CompressionType, const std::wstring& target);
  std::int16_t pageCount(const std::wstring& PageFilePath);
  void endPages();

  ImagingInstances instances_;
  ProgressList& listProcessLog_;
};

}  // namespace orvane
