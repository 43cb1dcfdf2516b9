#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

/// What the sources of all kinds do with a file and with a page.

namespace orvane {

/// The whole content of a regular file. Throws Failure, also for more than `kMaxPageBytes`.
Bytes readWholeFile(const std::wstring& path);

/// Throws Failure with the reason, for the operator, when `bytes` are more than a page may take.
void requireRoom(std::uint64_t bytes);

/// Encodes a raster so that every sample value can be read again: black and white as Group 4, with
/// a palette of black and white too, and everything else as LZW.
EncodedImage encodeWithoutLoss(Raster raster);

/// Runs `write`, which makes the page file `target`, and reads that as an export does. Throws
/// Failure with the reason, and leaves no file then.
void writeReadablePage(const std::wstring& target, const std::function<void()>& write);

/// The same for one page that is embedded in a new TIFF file.
void writeReadablePage(const std::wstring& target, const EncodedImage& image);

}  // namespace orvane
