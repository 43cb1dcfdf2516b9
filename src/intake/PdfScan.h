#pragma once

#include <memory>
#include <string>

#include "intake/SourceFile.h"

namespace orvane {

/// Opens a PDF file of scanned pages, each of which is one image. See openSourceFile.
std::unique_ptr<SourceFile> openPdfScan(const std::wstring& path);

}  // namespace orvane
