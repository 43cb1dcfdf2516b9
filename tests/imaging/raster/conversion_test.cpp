// Forms of pages that outside tools do not write; the common ones are judged in whole files.

#include "imaging/raster/conversion.h"

#include <gtest/gtest.h>

#include "support/failure_of.h"

namespace orvane::test {
namespace {

constexpr auto kGray = ColourModel::MinIsBlack;
constexpr auto kWhiteGray = ColourModel::MinIsWhite;
constexpr auto kPalette = ColourModel::Palette;
constexpr auto kRgb = ColourModel::Rgb;
constexpr auto kAssociated = ExtraSample::AssociatedAlpha;

Raster raster(std::uint32_t width, std::uint16_t bits, std::uint16_t samples, ColourModel model,
              Bytes pixels, std::vector<std::uint16_t> palette = {},
              ExtraSample extra = ExtraSample::None) {
  return {{bits, samples, model, extra, std::move(palette)}, width, 1, std::move(pixels)};
}

const std::vector<std::uint16_t> kRedAndGreen = {0xFFFF, 0, 0, 0x8000, 0, 0};
const std::vector<std::uint16_t> kWhiteFirst = {0xFFFF, 0x4000, 0xFFFF, 0x4000, 0xFFFF, 0x4000};

TEST(Conversion, ToGrayOrRgb8ToPdfAndToBilevel) {
  const struct {
    Raster from;
    bool keptInPdf;
    ColourModel model;
    Bytes pixels, bilevel;
  } cases[] = {
      {raster(9, 1, 1, kGray, {0xA5, 0x80}),
       true,
       kGray,
       {255, 0, 255, 0, 0, 255, 0, 255, 255},
       {0x5A, 0x00}},
      {raster(5, 2, 1, kGray, {0x1B, 0x40}), true, kGray, {0, 85, 170, 255, 85}, {0xC8}},
      {raster(3, 4, 1, kWhiteGray, {0x1F, 0x00}), true, kGray, {238, 0, 255}, {0x40}},
      {raster(2, 1, 1, kPalette, {0x40}, kRedAndGreen), true, kRgb, {255, 0, 0, 0, 128, 0}, {0x40}},
      {raster(2, 1, 1, kPalette, {0x40}, kWhiteFirst), true, kGray, {255, 0x40}, {0x40}},
      {raster(1, 8, 4, kRgb, {0, 10, 51, 51}, {}, kAssociated), false, kRgb, {204, 214, 255}, {0}},
      {raster(1, 8, 4, kRgb, {1, 2, 3, 0}, {}, ExtraSample::Unspecified),
       false,
       kRgb,
       {1, 2, 3},
       {0x80}},
      {raster(1, 16, 1, kWhiteGray, {0x34, 0x12}), false, kGray, {0xED}, {0}},
      {raster(1, 4, 3, kRgb, {0x12, 0x30}), false, kRgb, {17, 34, 51}, {0x80}},
  };
  for (const auto& [from, keptInPdf, model, pixels, bilevel] : cases) {
    const Raster result = toGrayOrRgb8(from), pdf = toPdfForm(from);
    EXPECT_EQ(result.model, model);
    EXPECT_EQ(result.bitsPerPixel(), model == kRgb ? 24 : 8);
    EXPECT_EQ(result.pixels, pixels);
    EXPECT_TRUE(result.extraSample == ExtraSample::None && result.palette.empty());
    EXPECT_EQ(pdf.model, keptInPdf ? from.model : model);
    EXPECT_EQ(pdf.pixels, keptInPdf ? from.pixels : pixels);
    EXPECT_EQ(toBilevel(from).pixels, bilevel);
  }
  EXPECT_THROW(toGrayOrRgb8(emptyRaster(cases[0].from, 1'000'000, 2'000)), Failure);
}

}  // namespace
}  // namespace orvane::test
