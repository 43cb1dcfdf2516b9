#pragma once

#include "export/RunHost.h"

namespace orvane {

/// Runs the export: takes the oldest batch in state 完成扫描, exports it and queries the table
/// again, until no batch is left or a stop is requested. Returns when the run has ended and the
/// buttons are idle again.
/// If the output folder is empty or does not exist, a box says so and no run starts. An error that
/// ends the run is logged and shown in a box. The run also ends if the query cannot be opened three
/// times in a row, or once if there is no database file.
void RunOutPutBatch(RunHost& host);

}  // namespace orvane
