#include <bit>
#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

#include "imaging/Random.h"
#include "imaging/operations/crop.h"
#include "imaging/operations/drawn_page.h"
#include "imaging/operations/finishing_filter.h"
#include "imaging/operations/resize.h"
#include "imaging/operations/rotate.h"
#include "imaging/operations/skew.h"
#include "imaging/raster/conversion.h"
#include "support/TempStation.h"
#include "support/command.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

Raster blank(std::uint16_t bits, std::uint16_t samples, std::uint32_t width, std::uint32_t height) {
  return emptyRaster(RasterForm{bits, samples}, width, height);
}

// A page as a PAM file: samples of one byte each, or two with the high one first.
std::string pamOf(const Raster& page) {
  const std::size_t bits = page.bitsPerSample;
  std::string pam = "P7\nWIDTH " + std::to_string(page.width) + "\nHEIGHT " +
                    std::to_string(page.height) + "\nDEPTH " +
                    std::to_string(page.samplesPerPixel) + "\nMAXVAL " +
                    std::to_string((1 << bits) - 1) + "\nTUPLTYPE " +
                    (page.samplesPerPixel == 1 ? "GRAYSCALE" : "RGB") + "\nENDHDR\n";
  for (std::uint32_t y = 0; y < page.height; ++y) {
    const std::uint8_t* row = page.row(y);
    for (std::size_t i = 0; i < std::size_t{page.width} * page.samplesPerPixel; ++i) {
      if (bits == 16) pam += {static_cast<char>(row[2 * i + 1]), static_cast<char>(row[2 * i])};
      if (bits == 16) continue;
      const std::size_t shift = 8 - bits - i * bits % 8;
      pam += static_cast<char>(row[i * bits / 8] >> shift & ((1 << bits) - 1));
    }
  }
  return pam;
}

// Expects `changed` to be what a tool of netpbm or ImageMagick makes of `page`: `tool` is the
// command before the file, `options` what follows it. A sample may differ by `tolerance` levels.
void expectAsMadeBy(const std::string& tool, const std::string& options, const Raster& page,
                    const Raster& changed, int tolerance = 0) {
  SCOPED_TRACE(tool + options + " at " + std::to_string(page.bitsPerPixel()) + " bits");
  const TempStation folder;
  writeBytes(folder.native("page.pam"), pamOf(page));
  const std::string made = outputOf(tool + " " + quoted(folder.native("page.pam")) + options);
  const std::string ours = pamOf(changed);
  ASSERT_EQ(ours.size(), made.size());
  int worst = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const int difference = static_cast<std::uint8_t>(ours[i]) - static_cast<std::uint8_t>(made[i]);
    worst = std::max(worst, std::abs(difference));
  }
  EXPECT_LE(worst, tolerance);
}

TEST(CropAndRotate, AreExactAtEveryDepth) {
  for (const auto& [bits, samples] : {std::pair<std::uint16_t, std::uint16_t>{1, 1},
                                      {2, 1},
                                      {4, 1},
                                      {8, 1},
                                      {16, 1},
                                      {1, 3},
                                      {8, 3},
                                      {16, 3}}) {
    Raster page = blank(bits, samples, 40, 23);
    Random random(bits * 10u + samples);
    for (std::uint8_t& byte : page.pixels) byte = static_cast<std::uint8_t>(random.below(256));
    expectAsMadeBy("pamcut 5 3 19 11", "", page, crop(page, 5, 3, 19, 11));
    expectAsMadeBy("pamcut 0 20 40 3", "", page, crop(page, -4, 20, 2147483647, 90));
    expectAsMadeBy("pamcut 39 0 1 1", "", page, crop(page, 39, -1, 9, 2));
    expectAsMadeBy("pamflip -ccw", "", page, rotate(page, 90));
    expectAsMadeBy("pamflip -cw", "", page, rotate(page, -90));
    expectAsMadeBy("pamflip -r180", "", page, rotate(page, -180));
    expectAsMadeBy("pamflip -ccw", "", page, rotate(page, 450));
  }
}

// A piece of a drawn page, as gray and as colour of a third of the width.
std::vector<Raster> samplePages() {
  const Raster gray = crop(drawnPage(Drawing::Text, 2.0), 75, 75, 123, 71);
  Raster colour = gray;
  colour.width = gray.width / 3;
  colour.samplesPerPixel = 3;
  colour.model = ColourModel::Rgb;
  return {gray, colour};
}

TEST(FinishingFilter, SharpensGrayAndColourAsTheSameConvolutionDoesElsewhere) {
  for (const auto& [strength, halfWidth] : {std::pair{0.3, 1}, {1.0, 2}, {0.0, 1}, {0.5, 10}}) {
    const int side = 2 * halfWidth + 1;
    std::string kernel = std::to_string(side) + "x" + std::to_string(side) + ":";
    for (int i = 0; i < side * side; ++i) {
      const double centre = i == side * side / 2 ? 1.0 + strength : 0.0;
      kernel.append(" ").append(std::to_string(centre - strength / (side * side)));
    }
    for (const Raster& page : samplePages()) {
      expectAsMadeBy(
          "convert", " -virtual-pixel Edge -morphology Convolve '" + kernel + "' pam:-", page,
          finishingFilter(page, static_cast<float>(strength), static_cast<short>(halfWidth)), 1);
    }
  }
}

TEST(Resize, MapsAreasDownAndInterpolatesUp) {
  for (const Raster& page : samplePages()) {
    expectAsMadeBy("convert", " -scale '17x29!' pam:-", page, resize(page, 17, 29), 1);
    expectAsMadeBy("convert", " -scale '1x1!' pam:-", page, resize(page, 1, 1), 1);
    expectAsMadeBy("convert", " -filter Triangle -resize '250x214!' pam:-", page,
                   resize(page, 250, 214), 1);
  }
}

// A 1-bit page of 16 columns from its rows, 1 for ink.
Raster pageOf(const std::vector<unsigned>& rows) {
  Raster page = blank(1, 1, 16, static_cast<std::uint32_t>(rows.size()));
  for (std::uint32_t y = 0; y < page.height; ++y) {
    page.row(y)[0] = static_cast<std::uint8_t>(rows[y] >> 8);
    page.row(y)[1] = static_cast<std::uint8_t>(rows[y]);
  }
  return page;
}

TEST(FinishingFilter, TakesAwaySpecksThatStandAlone) {
  const std::pair<std::vector<unsigned>, std::vector<unsigned>> cases[] = {
      {{0b1000000010000001, 0b0000000000100001, 0b0001000000000000},
       {0b0000000000000001, 0b0000000000000001, 0b0000000000000000}},
      {{0b0000000100001110, 0b0000001000001010, 0b1000000000001110},
       {0b0000000100001110, 0b0000001000001010, 0b0000000000001110}},
      {{0b0011100100000000, 0b0000000000100001, 0, 0b0000000110000000},
       {0b0011100000000000, 0b0000000000000000, 0, 0b0000000110000000}},
      {{0b1001001001010000}, {0b0001001001000000}}};  // four others within ten pixels spare a speck
  for (const auto& [rows, clean] : cases) {
    Raster page = pageOf(rows);
    EXPECT_EQ(finishingFilter(page, 0.3f, 1).pixels, pageOf(clean).pixels);
    page.model = ColourModel::MinIsBlack;
    for (std::uint8_t& byte : page.pixels) byte = static_cast<std::uint8_t>(~byte);
    EXPECT_EQ(finishingFilter(page, 0.3f, 1).pixels, pageOf(clean).pixels);
  }
}

TEST(FinishingFilter, TellsPepperFromTheDotsOfADitheredGray) {
  const std::string diffused = "-dither FloydSteinberg -remap pattern:gray50";
  const std::string strewn = "xc: +noise Random -channel G -separate -negate -threshold ";
  const struct {
    std::string drawing;  ///< by ImageMagick, 400 x 400 pixels
    double least, most;   ///< share of the ink that is left
  } cases[] = {{"gradient:white-gray60 " + diffused, 0.99, 1},
               {"'xc:gray(98%)' " + diffused, 0.99, 1},
               {"'xc:gray(92%)' " + diffused, 0.99, 1},
               {"'xc:gray(97%)' -ordered-dither o8x8", 0.99, 1},
               {strewn + "0.05%", 0, 0.01},
               {strewn + "0.2%", 0, 0.05}};
  for (const auto& [drawing, least, most] : cases) {
    const std::string gray =
        outputOf("convert -seed 7 -size 400x400 " + drawing + " -depth 8 -colorspace Gray gray:-");
    Raster page = blank(8, 1, 400, 400);
    page.model = ColourModel::MinIsBlack;
    page.pixels.assign(gray.begin(), gray.end());
    const auto ink = [](const Raster& bilevel) {
      int count = 0;
      for (const std::uint8_t byte : bilevel.pixels) count += std::popcount(byte);
      return count;
    };
    const Raster dots = toBilevel(page);
    const double left = static_cast<double>(ink(finishingFilter(dots, 0.3f, 1))) / ink(dots);
    EXPECT_TRUE(left >= least && left <= most) << drawing << ": " << left << " of " << ink(dots);
  }
}

TEST(Resize, MakesABilevelPageGrayOnlyWhereItShrinks) {
  const Raster page = pageOf({0b1100000000000011, 0b1100000000000010});
  EXPECT_EQ(resize(page, 8, 1).pixels, (Bytes{0, 255, 255, 255, 255, 255, 255, 64}));
  EXPECT_EQ(resize(page, 16, 4).pixels, pageOf({0xC003, 0xC003, 0xC002, 0xC002}).pixels);
}

TEST(Operations, RefuseWhatTheyCannotDoWithATextThatSaysWhy) {
  const Raster gray = blank(8, 1, 20, 10);
  const float nan = std::nanf("");
  const std::pair<std::function<void()>, std::string> refusals[] = {
      {[&] { crop(gray, 20, 0, 5, 5); }, "nothing of the page is left"},
      {[&] { crop(gray, 0, -5, 5, 5); }, "nothing of the page is left"},
      {[&] { crop(gray, 3, 3, 5, -2147483647 - 1); }, "nothing of the page is left"},
      {[&] { crop(gray, 2147483647, 0, 2147483647, 5); }, "nothing of the page is left"},
      {[&] { resize(gray, 0, 5); }, "0 x 5"},
      {[&] { resize(gray, 40000, 40000); }, "40000 x 40000"},
      {[&] { rotate(gray, nan); }, "angle"},
      {[&] { rotate(blank(1, 1, 200000, 1), 45); }, "too large"},
      {[&] { straighten(gray, HUGE_VAL); }, "angle"},
      {[&] { finishingFilter(gray, nan, 1); }, "strength"},
      {[&] { finishingFilter(gray, 1.5f, 1); }, "strength"},
      {[&] { finishingFilter(gray, 0.3f, 0); }, "half-width"}};
  for (const auto& [call, text] : refusals) {
    EXPECT_THAT(failureOf(call), testing::HasSubstr(text));
  }
}

TEST(Operations, WorkOnTheSmallestAndOnOddlyShapedPages) {
  for (const auto& [width, height] : {std::pair{1u, 1u}, {3u, 2u}, {1u, 5000u}, {7000u, 3u}}) {
    for (const Raster& page : {blank(8, 1, width, height), blank(1, 1, width, height)}) {
      EXPECT_EQ(measureSkew(page), 0.0);
      EXPECT_EQ(straighten(page, 3.0).pixels.size(), page.pixels.size());
      EXPECT_EQ(finishingFilter(page, 1.0f, 60).pixels.size(), page.pixels.size());
      EXPECT_EQ(resize(page, 2, 2).width, 2u);
      EXPECT_GE(rotate(page, 1.0).height, height);
    }
  }
}

constexpr double kDegree = std::numbers::pi / 180;

// Straightens a page and measures by its four marks what is left of the skew, across and down. With
// `columns` the page is scanned with so many times as many columns as rows to the inch.
void expectStraightened(const Raster& drawn, int columns = 1) {
  const int width = static_cast<int>(drawn.width), height = static_cast<int>(drawn.height);
  const Raster page = resize(drawn, columns * width, height);
  const Resolution resolution{75.0 * columns, 75.0};
  Raster straight = straighten(page, measureSkew(page, resolution), resolution);
  ASSERT_EQ(straight.width, page.width);
  ASSERT_EQ(straight.height, page.height);
  ASSERT_EQ(straight.bitsPerPixel(), page.bitsPerPixel());
  straight = resize(straight, width, height);
  std::array<Mark, 4> marks = kMarks;
  for (Mark& mark : marks) mark = markNear(straight, mark);
  EXPECT_LT(std::abs(std::atan2(marks[1].y - marks[0].y, marks[1].x - marks[0].x)), 0.1 * kDegree);
  EXPECT_LT(std::abs(std::atan2(marks[3].x - marks[2].x, marks[3].y - marks[2].y)), 0.1 * kDegree);
}

TEST(Skew, RemainsUnderATenthOfADegree) {
  struct Case {
    Drawing drawing;
    double skew;
    bool isBilevel, hasDarkBed;
    int columns;
  };
  const Case cases[] = {
      {Drawing::Text, -5.0, false, false, 1},        {Drawing::Text, -2.0, true, false, 1},
      {Drawing::Text, 0.0, false, false, 1},         {Drawing::Text, 0.5, true, false, 1},
      {Drawing::Text, 3.5, false, false, 1},         {Drawing::Text, 5.0, true, false, 1},
      {Drawing::Text, -4.7, false, false, 2},        {Drawing::Text, 0.4, true, false, 2},
      {Drawing::VerticalText, -4.7, false, true, 1}, {Drawing::VerticalText, 0.4, true, false, 1},
      {Drawing::PhotoAndText, 0.4, false, true, 1},  {Drawing::PhotoAndText, -4.7, true, false, 1},
      {Drawing::FourLines, -4.7, false, true, 1},    {Drawing::FourLines, 0.4, true, false, 1}};
  for (const auto& [drawing, skew, isBilevel, hasDarkBed, columns] : cases) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(drawing) << " " << skew);
    const Raster gray = drawnPage(drawing, skew, hasDarkBed);
    expectStraightened(isBilevel ? toBilevel(gray) : gray, columns);
  }
}

TEST(Skew, OfAPageThatShowsNoneIsZeroAndThePageStaysBitForBit) {
  for (const Raster& gray : {drawnPage(Drawing::Text, 0.0), drawnPage(Drawing::Dust, 2.0),
                             drawnPage(Drawing::Photo, 3.0), drawnPage(Drawing::Photo, 3.0, true),
                             drawnPage(Drawing::Signature, 3.0), drawnPage(Drawing::Stamp, 4.0),
                             drawnPage(Drawing::Words, 2.0)}) {
    for (const Raster& page : {gray, toBilevel(gray)}) {
      EXPECT_EQ(measureSkew(page), 0.0);
      EXPECT_EQ(straighten(page, 0.0).pixels, page.pixels);
    }
  }
}

TEST(Rotate, ByAnyAngleHoldsTheWholePageOnASheetWithPaperColouredCorners) {
  const Raster gray = drawnPage(Drawing::Text, 0.0);
  Raster colour = gray;
  colour.samplesPerPixel = 3;
  colour.model = ColourModel::Rgb;
  colour.pixels.clear();
  for (const std::uint8_t level : gray.pixels) colour.pixels.insert(colour.pixels.end(), 3, level);
  for (const double degrees : {1.0, -100.0, 45.0 + 360.0}) {
    const double cosine = std::cos(degrees * kDegree), sine = std::sin(degrees * kDegree);
    for (const Raster& page : {toBilevel(gray), gray, colour}) {
      SCOPED_TRACE(testing::Message() << degrees << " " << page.bitsPerPixel());
      const double width = page.width, height = page.height;
      const Raster turned = rotate(page, degrees);
      const Raster wide = rotate(resize(page, 1240, 877), degrees, {150, 75});
      EXPECT_NEAR(wide.width, 2 * turned.width, 2);
      EXPECT_EQ(wide.height, turned.height);
      EXPECT_EQ(turned.bitsPerPixel(), page.bitsPerPixel());
      EXPECT_EQ(turned.width, std::ceil(width * std::abs(cosine) + height * std::abs(sine)));
      EXPECT_EQ(turned.height, std::ceil(width * std::abs(sine) + height * std::abs(cosine)));
      EXPECT_NEAR(turned.pixels.front(), page.bitsPerSample == 1 ? 0 : kPaper, 2);
      EXPECT_NEAR(turned.pixels.back(), page.bitsPerSample == 1 ? 0 : kPaper, 2);
      for (const Mark& mark : kMarks) {
        const double dx = mark.x - width / 2, dy = mark.y - height / 2;
        const Mark expected{dx * cosine + dy * sine + turned.width / 2.0,
                            dy * cosine - dx * sine + turned.height / 2.0};
        EXPECT_NEAR(markNear(turned, expected).x, expected.x, 0.5);
        EXPECT_NEAR(markNear(turned, expected).y, expected.y, 0.5);
      }
    }
  }
}

}  // namespace
}  // namespace orvane::test
