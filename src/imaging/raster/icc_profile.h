#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"

/// ICC profiles (ICC.1:2001-04), which say what colours the samples of a page stand for.

namespace orvane {

/// The profile of a page, or why the one that it has cannot be kept.
struct PageProfile {
  Bytes bytes;           ///< empty: there is none
  std::wstring leftOut;  ///< for the log; empty when nothing is left out
};

/// Why `profile` does not describe samples of this photometric interpretation (ICC.1 clause 6.1:
/// size, version below 5, class, colour space, signature), for the log; empty when it does.
std::wstring iccMisfit(ByteView profile, Photometric photometric);

/// Why such a profile cannot go into a PDF/A-1b file, which takes whole input, display, output and
/// colour space profiles of version 2 (ISO 19005-1 clause 6.2.3.2, PDF Reference 1.4
/// section 4.5.4), for the log; empty when it can.
std::wstring iccMisfitInPdf(ByteView profile);

/// An ICC profile (ICC.1:2001-04, version 2.1, monitor class) of sRGB, computed from
/// IEC 61966-2-1.
std::string srgbProfile();

/// An APP2 segment of a JPEG stream begins with this name, the number of the segment from 1 and the
/// number of segments, a byte each; the rest of the segment is its part of the profile.
constexpr std::string_view kIccSegmentName("ICC_PROFILE\0", 12);
constexpr std::uint8_t kIccSegmentMarker = 0xE2;
constexpr std::size_t kMostIccSegmentBytes = 65519;  ///< of the profile, in one segment

}  // namespace orvane
