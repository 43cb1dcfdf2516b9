#include "imaging/codecs/jpeg.h"

#include <gmock/gmock.h>

#include "foundation/Failure.h"
#include "imaging/codecs/colour_pages.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using ::testing::HasSubstr;

Raster gray() {
  Raster raster;
  raster.bitsPerSample = 8;
  raster.model = ColourModel::MinIsBlack;
  return raster;
}

Raster rgb() {
  Raster raster = gray();
  raster.samplesPerPixel = 3;
  raster.model = ColourModel::Rgb;
  return raster;
}

std::string textOf(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// cjpeg writes the same stream, but for the density in bytes 13 to 17: it has no option for it.
TEST(Jpeg, EncodesTheStreamOfTheReferenceEncoder) {
  struct Case {
    Raster form;
    std::uint32_t width, height;
    JpegFactors factors;
    const char* quality;
  };
  const Case cases[] = {
      {gray(), 1, 1, {}, "80,84"},         {gray(), 83, 40, {40, 32}, "60,68"},
      {rgb(), 1, 1, {60, 48}, "40,52"},    {rgb(), 16, 16, {}, "80,84"},
      {rgb(), 301, 77, {40, 32}, "60,68"}, {rgb(), 500, 1, {-5, 150}, "100,1"},
      {rgb(), 17, 200, {99, 0}, "1,100"},
  };
  const TempStation station;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.quality);
    Random random(c.width);
    const Raster page = scannedPage(random, c.form, c.width, c.height);
    const EncodedImage image = encodeJpeg(page, c.factors, {300, 300});
    writePnm(station.native("page.pnm"), page);
    std::string expected = outputOf("cjpeg -baseline -dct int -quality " + std::string(c.quality) +
                                    " " + quoted(station.native("page.pnm")));
    expected.replace(13, 5, std::string("\x01\x01\x2C\x01\x2C", 5));
    ASSERT_EQ(image.strips.size(), 1u);
    EXPECT_TRUE(textOf(image.strips[0]) == expected);
    EXPECT_EQ(image.photometric,
              c.form.samplesPerPixel == 3 ? Photometric::YCbCr : Photometric::MinIsBlack);
  }
}

TEST(Jpeg, StatesTheDensityThatItCan) {
  struct Case {
    Resolution resolution;
    const char* density;
  };
  const Case cases[] = {{{299.6, 150.4}, "density 300x150  1"},
                        {{0.2, 1e9}, "density 1x65535  1"},
                        {{-3, 0.0 / 0.0}, "density 1x1  1"}};
  const TempStation station;
  Random random(1);
  const Raster page = scannedPage(random, rgb(), 20, 20);
  for (const Case& c : cases) {
    writeBytes(station.native("page.jpg"), textOf(encodeJpeg(page, {}, c.resolution).strips[0]));
    EXPECT_THAT(outputOf("djpeg -verbose -outfile /dev/null " + quoted(station.native("page.jpg"))),
                HasSubstr(c.density));
  }
}

TEST(Jpeg, RefusesWhatAStreamCannotHold) {
  Random random(1);
  for (const Raster& form : allForms()) {
    const bool fits = form.bitsPerSample == 8 && form.extraSample == ExtraSample::None &&
                      (form.model == ColourModel::MinIsBlack || form.model == ColourModel::Rgb);
    if (fits) continue;
    EXPECT_THROW(encodeJpeg(scannedPage(random, form, 8, 8), {}, {}), Failure);
  }
  const auto failureOf = [](std::uint32_t width, std::uint32_t height) -> std::string {
    Raster page = gray();
    page.width = width;
    page.height = height;
    page.pixels.resize(std::size_t{width} * height);
    try {
      encodeJpeg(page, {}, {});
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "none";
  };
  EXPECT_THAT(failureOf(65501, 1), HasSubstr("65500"));
  EXPECT_THAT(failureOf(1, 65501), HasSubstr("65500"));
  EXPECT_EQ(failureOf(65500, 1), "none");
}

}  // namespace
}  // namespace orvane::test
