#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "export/ScanTreeGuard.h"
#include "foundation/FileState.h"
#include "foundation/Outcome.h"
#include "imaging/ImagingEngine.h"

namespace orvane {

/// Receives the steps of a document's export.
class ExportListener {
 public:
  virtual ~ExportListener() = default;

  /// Throws Failure if the output folder of the run is no longer in its place. Called before
  /// anything is created or deleted, because reading the scans can take long.
  virtual void requireOutputFolder() {}
  /// Page `page` of `pageCount`, from 1, is about to be loaded and written.
  virtual void beginPage(int /*page*/, int /*pageCount*/) {}
  /// The file `older` exists at `path` and is about to be replaced.
  virtual void replace(const FileIdentity& /*older*/, const std::wstring& /*path*/) {}
  /// A file with `pages` pages is complete. If this throws, the document fails and the file is
  /// removed.
  virtual void addFile(const std::wstring& /*file*/, int /*pages*/) {}
  /// The page has been written.
  virtual void endPage() {}
};

namespace mdlDocumentHelper {

/// One document of the current batch (`gBatchFolder`), and how it is exported.
struct DocumentExport {
  ImagingEngine& ImgMerge;         ///< cleared if its last error is set; not used otherwise
  ImagingEngine& ImgControl;       ///< saves the pages; left empty
  ImagingEngine& ImgPageCount;     ///< as `ImgMerge`
  std::wstring DocumentID;         ///< the name of the document, which is the name of its folder
  std::int16_t SaveFileType;       ///< 0 TIFF, 1 JPEG, 2 PDF; a multi-page JPEG has PDF content
  bool IsPageFile;                 ///< true: one file per page; false: one multi-page file
  std::int16_t CompressionType;    ///< 0 compresses, any other value does not
  std::int16_t CompressionRatios;  ///< 0, 1 or 2 selects the JPEG factors
  std::wstring SavePath;  ///< the output folder, with or without a final `\`; created if missing;
                          ///< empty: the root folder
  std::wstring SubFolderType;  ///< despite its name, the mask of the page number
  std::wstring NewDocumentID;  ///< the front of the output names; may be empty
};

/// Exports one document. Older files of the same names are replaced. The first failure ends the
/// export, is logged, and removes the file that is being written; page files completed before it
/// stay. An output file inside the scan tree or outside `SavePath` is refused before anything is
/// created or deleted, and so is every page after another folder has replaced the output folder.
/// Succeeds if every page was written; a document without pages counts as written.
Outcome SaveAsDocument(const DocumentExport& order, ExportListener& listener);

/// The same operation with the parameters that hosts pass. Returns true if it succeeds.
bool SaveAsDocument(ImagingEngine& ImgMerge, ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                    const std::wstring& DocumentID, std::int16_t SaveFileType, bool IsPageFile,
                    std::int16_t CompressionType, std::int16_t CompressionRatios,
                    const std::wstring& SavePath, const std::wstring& SubFolderType,
                    const std::wstring& NewDocumentID);

}  // namespace mdlDocumentHelper

/// What `SaveAsDocument` requests of the savers. A JPEG file holds one page, so a multi-page JPEG
/// is written as PDF with the extension ".jpg".
SaveChoice saveChoice(std::int16_t SaveFileType, bool IsPageFile, std::int16_t CompressionType,
                      std::int16_t CompressionRatios);

/// The pages that the export of these documents of the current batch (`gBatchFolder`) will request,
/// so that the imaging instance can prepare them. A page list is read when its first page is
/// requested. One that cannot be read is skipped without a log line, because the export reports it.
PageForecast forecastOf(std::vector<std::wstring> documents, const SaveChoice& choice);

/// Gives an instance a forecast for the lifetime of this object; see `ImagingEngine::expectPages`.
class ForecastInPlace {
 public:
  ForecastInPlace(ImagingEngine& instance, PageForecast forecast,
                  std::function<void()> beforeWork = {})
      : instance_(instance) {
    instance_.expectPages(std::move(forecast), std::move(beforeWork));
  }
  ~ForecastInPlace() { instance_.expectPages({}, {}); }
  ForecastInPlace(const ForecastInPlace&) = delete;
  ForecastInPlace& operator=(const ForecastInPlace&) = delete;

 private:
  ImagingEngine& instance_;
};

}  // namespace orvane
