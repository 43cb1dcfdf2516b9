#pragma once

#include <memory>
#include <string>

#include "intake/SourceFile.h"

namespace orvane {

/// Opens a JPEG file, which is one page. See openSourceFile.
std::unique_ptr<SourceFile> openJpegScan(const std::wstring& path);

}  // namespace orvane
