#include "imaging/codecs/jpeg.h"

#include <gmock/gmock.h>

#include "imaging/codecs/pages.h"
#include "support/TempStation.h"
#include "support/command.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

using ::testing::HasSubstr;

const Raster kGray = form(ColourModel::MinIsBlack, 8), kRgb = form(ColourModel::Rgb, 8, 3);

std::string encoded(const Raster& page, JpegFactors factors, const Resolution& resolution) {
  const EncodedImage image = encodeJpeg(page, factors, resolution);
  EXPECT_EQ(image.strips.size(), 1u);
  return {image.strips[0].begin(), image.strips[0].end()};
}

// cjpeg writes the same stream, but for the density in bytes 13 to 17: it has no option for it.
TEST(Jpeg, EncodesTheStreamOfTheReferenceEncoder) {
  const std::tuple<Raster, std::uint32_t, std::uint32_t, JpegFactors, std::string> cases[] = {
      {kGray, 1, 1, {}, "80,84"},         {kGray, 83, 40, {40, 32}, "60,68"},
      {kRgb, 1, 1, {60, 48}, "40,52"},    {kRgb, 16, 16, {}, "80,84"},
      {kRgb, 301, 77, {40, 32}, "60,68"}, {kRgb, 500, 1, {-5, 150}, "100,1"},
      {kRgb, 17, 200, {99, 0}, "1,100"}};
  const TempStation station;
  for (const auto& [form, width, height, factors, quality] : cases) {
    Random random(width);
    const Raster page = scannedPage(random, form, width, height);
    writePnm(station.native("page.pnm"), page);
    std::string expected = outputOf("cjpeg -baseline -dct int -quality " + quality + " " +
                                    quoted(station.native("page.pnm")));
    expected.replace(13, 5, std::string("\x01\x01\x2C\x01\x2C", 5));
    EXPECT_TRUE(encoded(page, factors, {300, 300}) == expected) << quality;
  }
}

TEST(Jpeg, StatesTheDensityThatItCan) {
  const std::pair<Resolution, std::string> cases[] = {{{299.6, 150.4}, "density 300x150  1"},
                                                      {{0.2, 1e9}, "density 1x65535  1"},
                                                      {{-3, 0.0 / 0.0}, "density 1x1  1"}};
  const TempStation station;
  for (const auto& [resolution, density] : cases) {
    writeBytes(station.native("page.jpg"), encoded(emptyRaster(kRgb, 20, 20), {}, resolution));
    EXPECT_THAT(outputOf("djpeg -verbose -outfile /dev/null " + quoted(station.native("page.jpg"))),
                HasSubstr(density));
  }
}

TEST(Jpeg, RefusesWhatAStreamCannotHold) {
  for (const Raster& other :
       {form(ColourModel::Rgb, 16, 3), form(ColourModel::Palette, 8), form(ColourModel::Cmyk, 8, 4),
        form(ColourModel::MinIsWhite, 8), form(ColourModel::Rgb, 8, 4, ExtraSample::Unspecified)}) {
    EXPECT_THROW(encodeJpeg(emptyRaster(other, 8, 8), {}, {}), Failure);
  }
  for (const auto& [width, height, fits] :
       {std::tuple{65501u, 1u, false}, {1u, 65501u, false}, {65500u, 1u, true}}) {
    const std::string failure =
        failureOf([&, w = width, h = height] { encodeJpeg(emptyRaster(kGray, w, h), {}, {}); });
    EXPECT_EQ(failure.find("65500") == failure.npos, fits) << failure;
  }
}

}  // namespace
}  // namespace orvane::test
