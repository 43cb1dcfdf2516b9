#pragma once

#include "export/RunHost.h"

namespace orvane {

/// The run: takes the oldest batch in state 完成扫描, exports it, asks the table again, until none
/// is left or a stop was asked for. Returns when the run is over, with the buttons idle again. An
/// output folder that is not given or does not exist is told in a box and starts no run; an error
/// that ends the run goes to the log and to a box. A query that cannot be opened three times in a
/// row ends the run too, and so does the first one when there is no database file.
void RunOutPutBatch(RunHost& frmMain);

}  // namespace orvane
