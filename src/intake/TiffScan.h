#pragma once

#include <memory>
#include <string>

#include "intake/SourceFile.h"

namespace orvane {

/// Opens a TIFF file: each directory is a page. See openSourceFile.
std::unique_ptr<SourceFile> openTiffScan(const std::wstring& path);

}  // namespace orvane
