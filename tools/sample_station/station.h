#pragma once

#include <filesystem>
#include <string>

#include "tiff_writing.h"

namespace orvane::sample {

constexpr int kScanDpi = 300;
constexpr int kSmallDpi = 100;

// Fills `folder` as a program folder: the database Orvane.dll and the scan tree Batchs. An earlier
// sample there is replaced; other files stay.
void makeStation(const std::filesystem::path& folder, int dpi);

// Fills `folder` as one document: `count` pages of one kind, 000001.tif and so on, and Doc.dat.
// Four different sheets take turns, so that a long document is made quickly.
void makeDocument(const std::filesystem::path& folder, PageKind kind, int count, int dpi,
                  int jpegQuality);

}  // namespace orvane::sample
