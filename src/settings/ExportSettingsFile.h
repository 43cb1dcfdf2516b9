#pragma once

#include "settings/ExportForm.h"

/// The export settings on disk: `data.ini` in the program's folder.
namespace orvane {

/// Reads `data.ini` into `form`. A key that is missing or empty is written back with its default at
/// once. A value that cannot be parsed ends the load with a box; what was read before it stands,
/// the keys behind it are not read, and the bad value stays in the file.
void LoadExportSettings(ExportForm& form);

/// Writes the settings of `form` to the file that `LoadExportSettings` read. A file that cannot be
/// written loses them without a word.
void SaveExportSettings(const ExportForm& form);

}  // namespace orvane
