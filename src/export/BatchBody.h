#pragma once

#include <set>
#include <string>

#include "batchdb/BatchStore.h"
#include "export/OutputPlace.h"
#include "export/RunHost.h"
#include "export/RunReport.h"

namespace orvane {

/// The state of one run.
struct Run {
  std::wstring PageNumberMask;
  OutputPlace place;
  std::set<std::wstring> loggedFindings{};  ///< log lines about replaced or leftover files
  RunReport report{};
};

/// Exports the batch in `record`: all of its documents, then sets its new state. If a document
/// fails, the scan folder is missing or the update fails, the batch gets a remark instead. If each
/// batch has its own output folder, the files of a failed batch are removed. A sub-folder that
/// cannot be examined fails the batch with a log line, and so does an output folder that is no
/// longer the one that `SavePath` named at first. The batch keeps to the options that it began
/// with. Each step is reported to the host's list, its progress and the run's report. Throws only
/// what ends the whole run: a field that cannot be read or converted, or a folder that cannot be
/// listed.
void exportBatch(RunHost& host, const Recordset& record, Run& run);

}  // namespace orvane
