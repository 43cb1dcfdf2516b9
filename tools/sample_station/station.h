#pragma once

#include <filesystem>
#include <string>

#include "tiff_writing.h"

namespace orvane::sample {

constexpr int kScanDpi = 300;
constexpr int kSmallDpi = 100;

// Creates the database Orvane.dll and the scan tree Batchs in `folder`. An earlier sample is
// replaced; other files are kept.
void makeStation(const std::filesystem::path& folder, int dpi);

// Creates a document in `folder`: `count` pages of one kind, 000001.tif and so on, and Doc.dat.
// Only four different sheets are drawn, so that a long document is created quickly.
void makeDocument(const std::filesystem::path& folder, PageKind kind, int count, int dpi,
                  int jpegQuality);

}  // namespace orvane::sample
