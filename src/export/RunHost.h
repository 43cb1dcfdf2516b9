#pragma once

#include <string>

#include "export/RunProgress.h"
#include "foundation/WindowServices.h"
#include "imaging/ImagingInstances.h"
#include "settings/ExportSettings.h"

namespace orvane {

/// What a run asks of its window. `frmMain` implements it.
class RunHost {
 public:
  virtual ~RunHost() = default;

  /// The export options, as they stand now.
  virtual const ExportSettings& settings() const = 0;

  /// The text of `txtLiuShui`: the number of digits of a page number.
  virtual std::wstring txtLiuShui() const = 0;

  /// The stem of a document's output names under the naming pattern selected now.
  virtual std::wstring AutoMakeNewDocumentName(const std::wstring& sBatchName,
                                               const std::wstring& sDocName) const = 0;

  virtual ImagingInstances imaging() = 0;
  virtual ProgressList& listProcessLog() = 0;

  /// Where the run stands, as it tells itself.
  virtual RunProgress& progress() = 0;

  /// True once a stop or the end of the work was asked for.
  virtual bool IsStopRequested() const = 0;
  virtual void setIsStopRequested(bool requested) = 0;

  /// Enables `btnRun` (idle) or disables it (running).
  virtual void enableBtnRun(bool enabled) = 0;

  /// Brings `btnExit` and `btnStop` in line with `btnRun`.
  virtual void RefreshRunButtons() = 0;
};

}  // namespace orvane
