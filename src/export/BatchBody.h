#pragma once

#include <string>

#include "batchdb/Recordset.h"
#include "export/RunHost.h"

namespace orvane {

/// Exports the one batch that the record names: every document in it, then its new state, or a
/// remark when a document, the scan folder or the update failed. All or nothing: with a folder for
/// each batch the files of a failed batch are removed. Throws what ends the whole run: a field
/// that cannot be read or converted, a folder that cannot be listed.
void exportBatch(RunHost& frmMain, const Recordset& record, const std::wstring& PageNumberMask);

}  // namespace orvane
