#pragma once

#include <string>

#include "foundation/WindowServices.h"
#include "imaging/ImagingInstances.h"

namespace orvane {

/// The page clean-up of `frmMain`: a cleaned copy of a file of one or more pages, under the
/// settings of `mdlBatchAutoProcessStep`.
class PageCleanup {
 public:
  PageCleanup(const ImagingInstances& instances, ProgressList& listProcessLog)
      : instances_(instances), listProcessLog_(listProcessLog) {}

  /// Straightens, crops, turns and filters every page of `sImageFilePath` and adds it to the end of
  /// `sProcessedImageFilePath`, which keeps the pages that it already has.
  /// @return false after the first page that fails. One that cannot be saved takes the target with
  ///   it, unless that is the source, and goes to the list and to `sBatchErrorLogPath`; any other
  ///   failure leaves the pages saved so far and goes to the log and to `sBatchErrorLogPath`.
  bool ImageDocProcess(const std::wstring& sImageFilePath,
                       const std::wstring& sProcessedImageFilePath,
                       const std::wstring& sBatchErrorLogPath);

 private:
  void loadPage(const std::wstring& sImageFilePath, int page);
  void cleanPage();

  ImagingInstances instances_;
  ProgressList& listProcessLog_;
};

/// Adds an entry with a time stamp, and an empty line behind it, to the text file `FileName`, which
/// is created when it is missing. Never fails outward.
void WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName);

}  // namespace orvane
