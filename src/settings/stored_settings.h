#pragma once

#include "settings/ExportForm.h"

namespace orvane {

/// Reads `data.ini` into `form`. A missing or empty key gets its default, which is written to the
/// file at once. A value that cannot be parsed ends the load with a box: the keys before it are
/// loaded, those after it are not, and the bad value stays in the file.
void LoadExportSettings(ExportForm& form);

/// Writes the settings of `form` to the file that `LoadExportSettings` read. If the file cannot be
/// written, they are lost and no error is reported.
void SaveExportSettings(const ExportForm& form);

}  // namespace orvane
