#include <gtest/gtest.h>

#include "drawn_page.h"
#include "imaging/operations/operations.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

// A 1-bit page of 16 columns from its rows, 1 for ink.
Raster pageOf(const std::vector<unsigned>& rows) {
  Raster page = emptyRaster(Raster{}, 16, static_cast<std::uint32_t>(rows.size()));
  for (std::uint32_t y = 0; y < page.height; ++y) {
    page.row(y)[0] = static_cast<std::uint8_t>(rows[y] >> 8);
    page.row(y)[1] = static_cast<std::uint8_t>(rows[y]);
  }
  return page;
}

// Compares an 8-bit page with what ImageMagick makes of `page`; one level apart is rounding.
void expectAsMadeBy(const std::string& options, const Raster& page, const Raster& changed) {
  SCOPED_TRACE(options.substr(0, 40) + " " + std::to_string(page.samplesPerPixel));
  const TempStation folder;
  const std::string form = page.samplesPerPixel == 1 ? "gray:" : "rgb:";
  writeBytes(folder.native("page"), std::string(page.pixels.begin(), page.pixels.end()));
  const std::string expected = outputOf(
      "convert -depth 8 -size " + std::to_string(page.width) + "x" + std::to_string(page.height) +
      " " + form + quoted(folder.native("page")) + " " + options + " -depth 8 " + form + "-");
  ASSERT_EQ(changed.pixels.size(), expected.size());
  int worst = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const int difference = changed.pixels[i] - static_cast<std::uint8_t>(expected[i]);
    worst = std::max(worst, std::abs(difference));
  }
  EXPECT_LE(worst, 1);
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

TEST(Finish, TakesAwayInkWithoutNeighboursFromBilevelPages) {
  Raster page = pageOf({0b1000000010000001, 0b0000000000100001, 0b0001000000000000,
                        0b0000000100001110, 0b0000001000001010, 0b1000000000001110,
                        0b0011100100000000, 0b0000000000100001, 0, 0b0000000110000000});
  const Raster clean = pageOf({0b0000000000000001, 0b0000000000000001, 0b0000000000000000,
                               0b0000000100001110, 0b0000001000001010, 0b0000000000001110,
                               0b0011100000000000, 0b0000000000000000, 0, 0b0000000110000000});
  EXPECT_EQ(finish(page, 0.3f, 1).pixels, clean.pixels);

  page.model = ColourModel::MinIsBlack;
  for (std::uint8_t& byte : page.pixels) byte = static_cast<std::uint8_t>(~byte);
  EXPECT_EQ(finish(page, 0.3f, 1).pixels, clean.pixels);
}

TEST(Finish, SharpensGrayAndColourAsTheSameConvolutionDoesElsewhere) {
  for (const auto& [strength, halfWidth] : {std::pair{0.3, 1}, {1.0, 2}, {0.0, 1}, {0.5, 10}}) {
    const int side = 2 * halfWidth + 1;
    std::string kernel = std::to_string(side) + "x" + std::to_string(side) + ":";
    for (int i = 0; i < side * side; ++i) {
      const double centre = i == side * side / 2 ? 1.0 + strength : 0.0;
      kernel.append(" ").append(std::to_string(centre - strength / (side * side)));
    }
    for (const Raster& page : samplePages()) {
      expectAsMadeBy("-virtual-pixel Edge -morphology Convolve '" + kernel + "'", page,
                     finish(page, static_cast<float>(strength), static_cast<short>(halfWidth)));
    }
  }
}

TEST(Resize, MapsAreasDownAndInterpolatesUp) {
  for (const Raster& page : samplePages()) {
    expectAsMadeBy("-scale '17x29!'", page, resize(page, 17, 29));
    expectAsMadeBy("-scale '1x1!'", page, resize(page, 1, 1));
    expectAsMadeBy("-filter Triangle -resize '250x214!'", page, resize(page, 250, 214));
  }
}

TEST(Resize, MakesABilevelPageGrayOnlyWhereItShrinks) {
  const Raster page = pageOf({0b1100000000000011, 0b1100000000000010});
  EXPECT_EQ(resize(page, 8, 1).pixels, (Bytes{0, 255, 255, 255, 255, 255, 255, 64}));
  EXPECT_EQ(resize(page, 16, 4).pixels, pageOf({0xC003, 0xC003, 0xC002, 0xC002}).pixels);
}

}  // namespace
}  // namespace orvane::test
