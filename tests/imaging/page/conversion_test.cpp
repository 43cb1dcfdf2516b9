#include "imaging/page/conversion.h"

#include <gtest/gtest.h>

#include "imaging/page/orientation.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

constexpr auto kGray = ColourModel::MinIsBlack;
constexpr auto kWhiteGray = ColourModel::MinIsWhite;
constexpr auto kPalette = ColourModel::Palette;
constexpr auto kRgb = ColourModel::Rgb;
constexpr auto kCmyk = ColourModel::Cmyk;
constexpr auto kAlpha = ExtraSample::UnassociatedAlpha;
constexpr auto kAssociated = ExtraSample::AssociatedAlpha;

Raster raster(std::uint32_t width, std::uint16_t bits, std::uint16_t samples, ColourModel model,
              Bytes pixels, std::vector<std::uint16_t> palette = {},
              ExtraSample extra = ExtraSample::None) {
  Raster result;
  result.width = width, result.height = 1, result.bitsPerSample = bits;
  result.samplesPerPixel = samples, result.model = model, result.extraSample = extra;
  result.palette = std::move(palette);
  result.pixels = std::move(pixels);
  return result;
}

const std::vector<std::uint16_t> kTwoColours = {0xFFFF, 0, 0, 0x8000, 0, 0};  // red, dark green
const std::vector<std::uint16_t> kTwoGrays = {0x4000, 0x9000, 0x4000, 0x9000, 0x4000, 0x9000};

TEST(Conversion, ToGrayOrRgb8AndToWhatPdfCanHold) {
  const std::tuple<Raster, bool, ColourModel, Bytes> cases[] = {
      // true: stays as it is in PDF
      {raster(9, 1, 1, kGray, {0xA5, 0x80}), true, kGray, {255, 0, 255, 0, 0, 255, 0, 255, 255}},
      {raster(3, 1, 1, kWhiteGray, {0xA0}), true, kGray, {0, 255, 0}},
      {raster(5, 2, 1, kGray, {0x1B, 0x40}), true, kGray, {0, 85, 170, 255, 85}},
      {raster(3, 4, 1, kWhiteGray, {0x1F, 0x00}), true, kGray, {238, 0, 255}},
      {raster(2, 8, 1, kWhiteGray, {1, 255}), true, kGray, {254, 0}},
      {raster(2, 1, 1, kPalette, {0x40}, kTwoColours), true, kRgb, {255, 0, 0, 0, 128, 0}},
      {raster(2, 1, 1, kPalette, {0x40}, kTwoGrays), true, kGray, {0x40, 0x90}},
      {raster(2, 8, 2, kGray, {100, 255, 100, 0}, {}, kAlpha), false, kGray, {100, 255}},
      {raster(1, 8, 4, kRgb, {0, 100, 255, 51}, {}, kAlpha), false, kRgb, {204, 224, 255}},
      {raster(1, 8, 4, kRgb, {0, 10, 51, 51}, {}, kAssociated), false, kRgb, {204, 214, 255}},
      {raster(1, 8, 4, kRgb, {1, 2, 3, 0}, {}, ExtraSample::Unspecified), false, kRgb, {1, 2, 3}},
      {raster(2, 8, 4, kCmyk, {0, 255, 0, 0, 0, 0, 0, 255}), false, kRgb, {255, 0, 255, 0, 0, 0}},
      {raster(1, 8, 4, kCmyk, {0, 51, 102, 51}), false, kRgb, {204, 163, 122}},
      {raster(1, 16, 1, kWhiteGray, {0x34, 0x12}), false, kGray, {0xED}},
      {raster(1, 16, 3, kRgb, {0, 1, 0, 2, 255, 255}), false, kRgb, {1, 2, 255}},
      {raster(1, 8, 3, kRgb, {1, 2, 3}), true, kRgb, {1, 2, 3}},
      {raster(1, 4, 3, kRgb, {0x12, 0x30}), false, kRgb, {17, 34, 51}},
  };
  for (const auto& [from, keptInPdf, model, pixels] : cases) {
    const Raster result = toGrayOrRgb8(from), pdf = toPdfForm(from);
    EXPECT_EQ(result.model, model);
    EXPECT_EQ(result.bitsPerPixel(), model == kRgb ? 24 : 8);
    EXPECT_EQ(result.pixels, pixels);
    EXPECT_TRUE(result.extraSample == ExtraSample::None && result.palette.empty());
    EXPECT_EQ(pdf.model, keptInPdf ? from.model : model);
    EXPECT_EQ(pdf.pixels, keptInPdf ? from.pixels : pixels);
  }
}

TEST(Conversion, ToBilevelIsBlackWhereTheSourceIsDark) {
  const std::vector<std::uint16_t> whiteFirst = {0xFFFF, 0xF000, 0xFFFF, 0xF000, 0xFFFF, 0x8000};
  const struct {
    Raster from;
    Bytes pixels;
  } cases[] = {
      {raster(4, 1, 1, kWhiteGray, {0x50}), {0x50}},
      {raster(4, 1, 1, kGray, {0x50}), {0xA0}},
      {raster(4, 1, 1, kPalette, {0x50}, kTwoGrays), {0xA0}},
      {raster(4, 1, 1, kPalette, {0x50}, whiteFirst), {0x50}},
      {raster(4, 8, 1, kGray, {0, 127, 128, 255}), {0xC0}},
      {raster(2, 8, 3, kRgb, {255, 0, 0, 0, 255, 0}), {0x80}},
      {raster(9, 4, 1, kWhiteGray, {0xF0, 0, 0, 0, 0xF0}), {0x80, 0x80}},
  };
  for (const auto& c : cases) {
    const Raster result = toBilevel(c.from);
    EXPECT_EQ(result.model, kWhiteGray);
    EXPECT_EQ(result.bitsPerPixel(), 1);
    EXPECT_EQ(result.pixels, c.pixels);
    EXPECT_TRUE(result.palette.empty());
  }
}

TEST(Conversion, WhatWouldTakeMoreThanAPageMayIsRefused) {
  EXPECT_THROW(emptyRaster(raster(1, 8, 3, kRgb, {1, 2, 3}), 40'000, 40'000), Failure);
  const Raster wide = emptyRaster(raster(1, 1, 1, kGray, {0}), 1'000'000, 2'000);
  EXPECT_THROW(toGrayOrRgb8(wide), Failure);
}

TEST(Orientation, QuarterTurnsGoToTheLeftAndFourComeBack) {
  const Raster row = raster(3, 8, 1, kGray, {1, 2, 3});
  EXPECT_EQ(rotateQuarters(row, 1).pixels, (Bytes{3, 2, 1}));
  EXPECT_EQ(rotateQuarters(row, 1).height, 3U);
  EXPECT_EQ(rotateQuarters(row, -1).pixels, (Bytes{1, 2, 3}));
  EXPECT_EQ(rotateQuarters(row, -1).width, 1U);
  EXPECT_EQ(rotateQuarters(row, 6).pixels, (Bytes{3, 2, 1}));
  EXPECT_EQ(rotateQuarters(row, -4).pixels, row.pixels);
}

}  // namespace
}  // namespace orvane::test
