#pragma once

#include <memory>
#include <string>

#include "intake/SourceFile.h"

namespace orvane {

/// Opens a PNG file, which is one page. See openSourceFile.
std::unique_ptr<SourceFile> openPngScan(const std::wstring& path);

}  // namespace orvane
