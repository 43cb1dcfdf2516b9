#include <gtest/gtest.h>
#include <string>

#include "imaging/operations/blank.h"
#include "imaging/operations/drawn_page.h"
#include "imaging/operations/skew.h"
#include "imaging/raster/conversion.h"
#include "support/command.h"

namespace orvane::test {
namespace {

// A sheet of A4 at 200 dots per inch, drawn by ImageMagick: white paper, and what `drawing` makes
// of it.
Raster sheet(const std::string& drawing, int bits) {
  const std::string pixels =
      outputOf("convert -seed 3 -size 1654x2339 xc:white +antialias -fill black " + drawing +
               " -depth 8 " + (bits == 24 ? "rgb:-" : "gray:-"));
  const auto samples = static_cast<std::uint16_t>(bits == 24 ? 3 : 1);
  Raster page{{8, samples, bits == 24 ? ColourModel::Rgb : ColourModel::MinIsBlack},
              1654,
              2339,
              Bytes(pixels.begin(), pixels.end())};
  return bits == 1 ? toBilevel(std::move(page)) : page;
}

std::string specks(const std::string& percent) {
  return "+noise Random -channel G -separate +channel -threshold " + percent +
         "% -negate -morphology Erode Square:1";
}

TEST(Blank, IsAPageWithNothingButSpecksOnIt) {
  // The smallest digit in print, 1.4 mm high, as strokes and as the dots of a matrix printer.
  const std::string digit = "-draw 'rectangle 826,2230 827,2240' ";
  const std::string dots =
      "-draw 'rectangle 826,2230 827,2231 rectangle 826,2233 827,2234 rectangle 826,2236 827,2237 "
      "rectangle 826,2239 827,2240' ";
  const std::string noisyPaper = "+level-colors 'gray(40),gray(225)' -attenuate 0.1 +noise Uniform";
  const struct {
    const char* name;
    std::string drawing;
    int bits;
    bool isBlank;
  } cases[] = {
      {"empty", "", 1, true},
      {"empty gray", noisyPaper, 8, true},
      {"specks of three pixels", specks("99.997"), 1, true},
      {"too many specks to be sure", specks("99.99"), 1, false},
      {"page number", digit, 1, false},
      {"page number of dots", dots, 1, false},
      {"page number on noisy paper", digit + noisyPaper, 8, false},
      {"pale pencil", "-fill 'gray(215)' " + digit, 8, false},
      {"yellow marker", "-fill yellow -draw 'rectangle 300,300 600,340'", 24, false},
      {"black", "-negate", 1, false},
      {"black in gray", "-negate", 8, false},
  };
  for (const auto& page : cases) {
    SCOPED_TRACE(page.name);
    const Raster raster = sheet(page.drawing, page.bits);
    // A resolution that is not stated or that is wrong hides nothing.
    for (const Resolution& resolution :
         {Resolution{200, 200, true}, Resolution{}, Resolution{1200, 1200, true}}) {
      EXPECT_EQ(isBlank(raster, resolution), page.isBlank)
          << resolution.x << " dots per inch; share of ink " << inkShare(raster);
    }
  }
}

TEST(Skew, BeyondALimitIsToldAndNoOther) {
  for (const Drawing drawing : {Drawing::Text, Drawing::VerticalText}) {
    for (const double skew : {-3.0, 1.2}) {
      EXPECT_NEAR(skewBeyond(1.0, drawnPage(drawing, skew)), -skew, 0.1);
    }
    EXPECT_EQ(skewBeyond(1.0, drawnPage(drawing, -0.8)), 0.0);
  }
  EXPECT_EQ(skewBeyond(1.0, drawnPage(Drawing::Signature, 3.0)), 0.0);
}

}  // namespace
}  // namespace orvane::test
