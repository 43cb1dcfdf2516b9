#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imaging/containers/TiffForm.h"
#include "imaging/page/EncodedImage.h"

namespace orvane {

/// TIFF 6.0 NewSubfileType of a page.
enum class TiffSubfile : std::uint32_t { SingleImage = 0, PageOfMany = 2 };

/// A page laid out for a place at the end of a TIFF file: strips, then the directory, everything on
/// even offsets. `parts` points into the image and into `directory`.
struct TiffPagePlan {
  std::vector<ByteView> parts;  ///< what goes into the file from the planned offset on
  Bytes directory;
  std::uint64_t directoryOffset = 0;
  std::uint64_t nextLink = 0;  ///< where the offset of the next directory goes
};

/// Plans page `number` (from 0) for `offset`. Throws Failure, naming `path`, for an image that does
/// not fit together and for one that would pass 4 GiB in a classic TIFF.
TiffPagePlan planTiffPage(const std::wstring& path, TiffForm form, std::uint64_t offset,
                          const EncodedImage& image, TiffSubfile subfile, std::uint32_t number);

}  // namespace orvane
