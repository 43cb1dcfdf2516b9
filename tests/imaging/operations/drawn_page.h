#pragma once

#include <array>
#include <cstdint>

#include "imaging/page/Raster.h"

namespace orvane::test {

/// What a drawn page of A4 at 75 dots per inch shows, besides four marks.
enum class Drawing { Text, VerticalText, PhotoAndText, Photo, Dust };

inline constexpr std::uint8_t kPaper = 225;

/// A gray page drawn by ImageMagick, noise and all, that lies turned to the left by `skew` degrees.
/// With `darkBed` the sheet is smaller than the scan, and black is around it.
Raster drawnPage(Drawing drawing, double skew, bool darkBed = false);

/// A square mark: its centre in pixels.
struct Mark {
  double x;
  double y;
};

/// The marks of every drawn page as they lie on a straight one: left, right, top, bottom.
inline constexpr std::array<Mark, 4> kMarks{
    {{55.5, 438.5}, {564.5, 438.5}, {310.5, 55.5}, {310.5, 821.5}}};

/// The centre of gravity of the dark pixels within 14 pixels of `place`.
Mark markNear(const Raster& page, Mark place);

}  // namespace orvane::test
