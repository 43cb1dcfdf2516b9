#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "docstore/ScanTree.h"
#include "export/SaveAsDocument.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "imaging/ImagingControl.h"

namespace orvane::bench {

/// A document, and how it is exported.
struct ExportTask {
  std::filesystem::path document;      ///< a document folder with its `Doc.dat`
  std::filesystem::path outputFolder;  ///< created if missing
  std::int16_t saveFileType = 0;       ///< 0 TIFF, 1 JPEG, 2 PDF
  bool isPageFile = false;             ///< one file per page
  std::int16_t compressionType = 0;    ///< 0 compress, 1 do not compress
  std::int16_t compressionRatios = 0;  ///< 0, 1 or 2
  std::optional<unsigned> workers{};   ///< absent: as many as the program takes on this machine
};

/// Exports one document through the routine that the run calls, with the memory settings of the
/// program but without a window. Returns false after a failure.
inline bool exportDocument(const ExportTask& task) {
  keepFreedMemory();
  const std::filesystem::path document = std::filesystem::absolute(task.document);
  gBatchFolder = pathText(document.parent_path());
  ImagingControl ImgControl, ImgMerge, ImgPageCount;
  if (task.workers) ImgControl.setWorkers(*task.workers);
  const ForecastInPlace forecast(
      ImgControl, forecastOf({pathText(document.filename())},
                             saveChoice(task.saveFileType, task.isPageFile, task.compressionType,
                                        task.compressionRatios)));
  return mdlDocumentHelper::SaveAsDocument(
      ImgMerge, ImgControl, ImgPageCount, pathText(document.filename()), task.saveFileType,
      task.isPageFile, task.compressionType, task.compressionRatios,
      pathText(std::filesystem::absolute(task.outputFolder)), L"0000", L"page");
}

}  // namespace orvane::bench
