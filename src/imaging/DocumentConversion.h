#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "foundation/WindowServices.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// The conversions of `frmMain`: a multi-page image file becomes one other file, or one file for
/// each page. `SaveFileType` is 0 for TIFF, 1 for PDF under the name ".jpg", 2 for PDF.
/// `CompressionType` 0 compresses, any other value does not. A page that fails is logged and
/// skipped; `ImagError` is not checked. PDF pages have 200 dots per inch.
class DocumentConversion {
 public:
  DocumentConversion(const ImagingInstances& instances, ProgressList& listProcessLog)
      : instances_(instances), listProcessLog_(listProcessLog) {}

  /// Converts `sImageFilePath` into the file `sChangedPDFFilePath`, replacing an older one, and
  /// shows the busy pointer meanwhile. A failure adds a line to the list. `sBatchErrorLogPath` is
  /// not used. A target that is the source, also by another spelling or a link, is refused and
  /// logged.
  bool ChangeToDocPDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFFilePath,
                      const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                      std::int16_t CompressionType);

  /// Converts `sImageFilePath` into one file for each page in the folder `sChangedPDFRootPath`, and
  /// shows the busy pointer meanwhile. A failure adds a line to the list. `sBatchErrorLogPath` is
  /// not used. Refused and logged are the name of the source as a folder name, because a file of
  /// that name is deleted first, and a folder where the source is the file of one of its pages.
  bool ChangeToPagePDF(const std::wstring& sImageFilePath, const std::wstring& sChangedPDFRootPath,
                       const std::wstring& sBatchErrorLogPath, std::int16_t SaveFileType,
                       std::int16_t CompressionType);

  /// Appends all pages of `PageFilePath` to `SaveFilePath`. Every ".ts" in that path becomes the
  /// extension of `SaveFileType`.
  bool SaveAsDocument(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                      std::int16_t CompressionType, const std::wstring& SaveFilePath);

  /// Saves each page of `PageFilePath` in the folder `SaveRootPath`, under its number: 001, 002 and
  /// so on. If the file exists, the page is appended to it.
  bool SaveAsPage(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                  std::int16_t CompressionType, const std::wstring& SaveRootPath);

  /// Writes one page as TIFF. An empty `sSaveFilePath` overwrites the source.
  static void SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                        std::int16_t PageNum, const std::wstring& sSaveFilePath = {},
                        bool bCompression = false, bool bSaveMultiPage = false);

  /// Writes one page as PDF. An empty `sSaveFilePath` overwrites the source.
  static void SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                      std::int16_t PageNum, const std::wstring& sSaveFilePath = {},
                      bool bCompression = false, bool bSaveMultiPage = false);

 private:
  /// A failure of `save` is logged under `source`, with the value of `note` at that time.
  bool convert(const std::wstring& sImageFilePath, const std::wstring& note,
               const std::wstring& source, const std::function<bool()>& save);
  /// Throws Failure if one of the files that `SaveAsPage` will write is the source.
  void requireOtherPageFiles(const std::wstring& source, const std::wstring& root,
                             std::int16_t SaveFileType);
  void listFailure(const std::wstring& sImageFilePath);
  void savePage(const std::wstring& PageFilePath, int page, std::int16_t SaveFileType,
                std::int16_t CompressionType, const std::wstring& target);
  std::int16_t pageCount(const std::wstring& PageFilePath);
  void endPages();

  ImagingInstances instances_;
  ProgressList& listProcessLog_;
};

}  // namespace orvane
