#pragma once

#include <array>
#include <cstdint>

#include "imaging/raster/Raster.h"
#include "imaging/raster/conversion.h"
#include "support/command.h"

namespace orvane::test {

/// What a drawn page of A4 at 75 dots per inch shows, besides four marks.
enum class Drawing {
  Text,
  FourLines,
  VerticalText,
  PhotoAndText,
  Photo,
  Dust,
  Signature,
  Stamp,
  Words
};

inline constexpr std::uint8_t kPaper = 225;

/// A square mark: its centre in pixels.
struct Mark {
  double x;
  double y;
};

/// The marks of every drawn page before it is turned: left, right, top, bottom.
inline constexpr std::array<Mark, 4> kMarks{
    {{55.5, 438.5}, {564.5, 438.5}, {310.5, 55.5}, {310.5, 821.5}}};

// Lines of letters: blocks of noise, with white between the lines.
inline std::string text(int width, int height) {
  const std::string columns = std::to_string(width), rows = std::to_string(height);
  return " \\( -size " + std::to_string(width / 5) + "x" + std::to_string(height / 5) +
         " xc: +noise Random -channel G -separate +channel -threshold 55% -scale " + columns + "x" +
         rows + "! \\( -size " + columns + "x8 xc:black -size " + columns +
         "x11 xc:white -append -write mpr:line +delete -size " + columns + "x" + rows +
         " tile:mpr:line \\) -compose Lighten -composite";
}

inline std::string drawn(Drawing drawing) {
  const std::string end = " \\) -compose Over -geometry ";
  const std::string photo = " -fill black -draw 'rectangle 110,110 409,329'";
  switch (drawing) {
    case Drawing::Text:
      return text(460, 705) + end + "+80+85 -composite";
    case Drawing::FourLines:
      return text(460, 74) + end + "+80+85 -composite";
    case Drawing::Words:
      return text(150, 17) + end + "+80+85 -composite";
    case Drawing::Signature:
      return " -fill none -stroke black -strokewidth 2 -draw \"path 'M 330,690 c 20,-70 40,-70 "
             "15,0 "
             "s 25,-40 25,0 30,-50 25,0 20,-30 25,0 35,-80 15,0 30,-40 25,0 20,-30 25,0 "
             "c 30,10 -100,15 -160,12'\" -stroke none";
    case Drawing::Stamp:
      return text(100, 36) + end + "+400+600 -composite -fill none -stroke black -strokewidth 2 " +
             "-draw 'rectangle 390,592 512,646' -stroke none";
    case Drawing::VerticalText:
      return text(705, 460) + " -rotate 90" + end + "+80+85 -composite";
    case Drawing::PhotoAndText:
      return text(460, 390) + end + "+80+400 -composite" + photo;
    case Drawing::Photo:
      return photo;
    case Drawing::Dust:
      return " +noise Random -channel G -separate +channel -threshold 99.98% -negate "
             "-morphology Erode Square:1";
  }
  return {};
}

/// A gray page with noise, drawn by ImageMagick and turned to the left by `skew` degrees.
/// With `darkBed` the sheet is smaller than the scan, and black is around it.
inline Raster drawnPage(Drawing drawing, double skew, bool darkBed = false) {
  const std::string gray =
      outputOf("convert -seed 7 -size 620x877 xc:white" + drawn(drawing) +
               " -fill black -draw 'rectangle 52,435 58,441 rectangle 561,435 567,441 "
               "rectangle 307,52 313,58 rectangle 307,818 313,824'" +
               (darkBed ? " -shave 30x30 -bordercolor black -border 30 -background black"
                        : " -background white") +
               " -virtual-pixel Background -distort SRT " + std::to_string(-skew) +
               " +level-colors 'gray(41),gray(225)' -attenuate 0.1 +noise Uniform -depth 8 gray:-");
  return {{8, 1, ColourModel::MinIsBlack}, 620, 877, Bytes(gray.begin(), gray.end())};
}

/// The centre of gravity of the dark pixels within 14 pixels of `place`.
inline Mark markNear(const Raster& page, Mark place) {
  const Raster gray = toGrayOrRgb8(page);
  double sum = 0;
  Mark centre{0, 0};
  for (std::uint32_t i = 0; i < 29 * 29; ++i) {
    const std::uint32_t x = static_cast<std::uint32_t>(place.x) - 14 + i % 29;
    const std::uint32_t y = static_cast<std::uint32_t>(place.y) - 14 + i / 29;
    if (gray.row(y)[x * gray.samplesPerPixel] >= 128) continue;
    sum += 1;
    centre = {centre.x + x + 0.5, centre.y + y + 0.5};
  }
  return {centre.x / sum, centre.y / sum};
}

}  // namespace orvane::test
