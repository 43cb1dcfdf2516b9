#pragma once

#include <cstdint>
#include <string>

#include "foundation/WindowServices.h"
#include "imaging/ImagingEngine.h"

/// The settings of the page clean-up. A host sets them before it calls `ImageDocProcess`; nothing
/// in the program does. With the start values a page is only filtered and saved again.
namespace orvane::mdlBatchAutoProcessStep {

/// "向右旋转90度", "向左旋转90度", "向右旋转180度" or "向左旋转180度"; any other text turns
/// nothing.
inline std::wstring AutoRotate;

/// Straighten the page.
inline bool AutoDeskew = false;

/// Pixels cut off at each edge of the straightened page.
struct CropMargins {
  bool Used = false;
  std::int16_t Left = 0;
  std::int16_t Up = 0;
  std::int16_t Right = 0;
  std::int16_t Bottom = 0;
};
inline CropMargins AutoCrop;

}  // namespace orvane::mdlBatchAutoProcessStep

namespace orvane {

/// The page clean-up of `frmMain`: makes a cleaned copy of a file of one or more pages, under the
/// settings of `mdlBatchAutoProcessStep`.
class PageCleanup {
 public:
  PageCleanup(const ImagingInstances& instances, ProgressList& listProcessLog)
      : instances_(instances), listProcessLog_(listProcessLog) {}

  /// Straightens, crops, rotates and filters every page of `sImageFilePath` and appends it to
  /// `sProcessedImageFilePath`, which keeps the pages that it already has.
  /// @return false after the first page that fails. If it cannot be saved, the target is deleted
  ///   unless it is the source, and the failure is added to the list and to `sBatchErrorLogPath`.
  ///   After any other failure the pages saved so far stay, and the failure is added to the log and
  ///   to `sBatchErrorLogPath`.
  bool ImageDocProcess(const std::wstring& sImageFilePath,
                       const std::wstring& sProcessedImageFilePath,
                       const std::wstring& sBatchErrorLogPath);

 private:
  void loadPage(const std::wstring& sImageFilePath, int page);
  void cleanPage();

  ImagingInstances instances_;
  ProgressList& listProcessLog_;
};

/// Adds an entry with a time stamp, followed by an empty line, to the text file `FileName`, which
/// is created if it is missing. A failure is ignored.
void WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName);

}  // namespace orvane
