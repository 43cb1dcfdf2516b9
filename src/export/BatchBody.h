#pragma once

#include <string>

#include "batchdb/BatchStore.h"
#include "export/RunHost.h"
#include "export/RunReport.h"
#include "export/ScanTreeGuard.h"
#include "export/WrittenFiles.h"

namespace orvane {

/// What one run holds from its start to its end.
struct Run {
  std::wstring PageNumberMask;
  HeldFolder outputFolder;  ///< what stood under `SavePath`
  WrittenFiles written{};
  std::wstring lastFinding{};  ///< the last log line about replaced or left files
  RunReport report{};
};

/// Exports the one batch that the record names: every document in it, then its new state, or a
/// remark when a document, the scan folder or the update failed. All or nothing: with a folder for
/// each batch the files of a failed batch are removed. A sub-folder that cannot be looked at, and
/// an output folder that is no longer the one of the run's start, fail the batch with a log line
/// that says why. The host's list, its progress and the run's report are told of each step. Throws
/// what ends the whole run: a field that cannot be read or converted, a folder that cannot be
/// listed.
void exportBatch(RunHost& frmMain, const Recordset& record, Run& run);

}  // namespace orvane
