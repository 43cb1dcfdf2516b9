#pragma once

#include <cstddef>
#include <string>

#include "settings/ExportForm.h"

/// What the operator is told about the output files before a run, for one page of a sample
/// document. The names come from the naming functions of the export.
namespace orvane {

/// What the names of output files depend on beside the options.
struct OutputDisk {
  std::size_t longestName = 255;  ///< in bytes
  bool isInScanTree = false;      ///< nothing can be exported to the folder
};

/// Examines the output folder. The default if it is empty or cannot be examined. Can take long if
/// the disk is not reachable.
OutputDisk examineOutputDisk(const std::wstring& SavePath);

/// The output file of page 2 of a sample document under the current options. If no pattern is
/// selected, the export would fail or files can replace each other, lines that begin with "⚠"
/// follow. Every line has a line end.
std::wstring namingPreview(const ExportForm& form, const OutputDisk& disk);

/// The name of that file under another pattern, followed by "⚠" if there is a warning. Empty if the
/// options are invalid.
std::wstring exampleName(const ExportForm& form, const std::wstring& pattern,
                         const OutputDisk& disk);

}  // namespace orvane
