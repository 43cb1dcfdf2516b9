#pragma once

#include <string>

#include "export/RunProgress.h"
#include "foundation/WindowServices.h"
#include "imaging/ImagingEngine.h"
#include "settings/ExportSettings.h"

namespace orvane {

/// What a run needs from its window. `frmMain` implements it.
class RunHost {
 public:
  virtual ~RunHost() = default;

  /// The current export options.
  virtual const ExportSettings& settings() const = 0;

  /// The text of `txtLiuShui`: the number of digits of a page number.
  virtual std::wstring txtLiuShui() const = 0;

  /// The front of a document's output names under the currently selected naming pattern.
  virtual std::wstring AutoMakeNewDocumentName(const std::wstring& sBatchName,
                                               const std::wstring& sDocName) const = 0;

  virtual ImagingInstances imaging() = 0;
  virtual ProgressList& listProcessLog() = 0;

  /// The progress of the run, which the run updates.
  virtual RunProgress& progress() = 0;

  /// True once a stop was requested or no batch is left.
  virtual bool IsStopRequested() const = 0;
  virtual void setIsStopRequested(bool requested) = 0;

  /// Enables `btnRun` (idle) or disables it (running).
  virtual void enableBtnRun(bool enabled) = 0;

  /// Enables `btnExit` exactly if `btnRun` is enabled, and `btnStop` exactly if it is not.
  virtual void RefreshRunButtons() = 0;
};

}  // namespace orvane
