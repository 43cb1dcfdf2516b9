#include "imaging/codecs/jpeg_transcode.h"

#include <cmath>
#include <gmock/gmock.h>

#include "foundation/Failure.h"
#include "imaging/codecs/colour_pages.h"
#include "imaging/codecs/libjpeg_judge.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

Raster scan(std::uint16_t samples, std::uint32_t width, std::uint32_t height) {
  Raster form;
  form.bitsPerSample = 8;
  form.samplesPerPixel = samples;
  form.model = samples == 3 ? ColourModel::Rgb : ColourModel::MinIsBlack;
  Random random(width * 7 + samples);
  return scannedPage(random, form, width, height);
}

Raster rowsOf(const Raster& page, std::uint32_t top, std::uint32_t rows) {
  Raster part = page;
  part.height = std::min(rows, page.height - top);
  part.pixels.assign(page.row(top), page.row(top) + part.height * page.rowBytes());
  return part;
}

EncodedImage jpegImage(const Raster& page, std::vector<Bytes> strips, std::uint32_t rowsPerStrip) {
  EncodedImage image;
  image.width = page.width;
  image.height = page.height;
  image.bitsPerSample = 8;
  image.samplesPerPixel = page.samplesPerPixel;
  image.photometric = page.samplesPerPixel == 3 ? Photometric::YCbCr : Photometric::MinIsBlack;
  image.compression = Compression::Jpeg;
  image.rowsPerStrip = rowsPerStrip;
  image.strips = std::move(strips);
  image.resolution = {300, 300};
  return image;
}

/// One stream of cjpeg for every `rowsPerStrip` rows.
EncodedImage encodedByCjpeg(const Raster& page, const std::string& options,
                            std::uint32_t rowsPerStrip = 10000) {
  const TempStation station;
  std::vector<Bytes> strips;
  for (std::uint32_t top = 0; top < page.height; top += rowsPerStrip) {
    writePnm(station.native("page.pnm"), rowsOf(page, top, rowsPerStrip));
    const std::string stream =
        outputOf("cjpeg " + options + " " + quoted(station.native("page.pnm")));
    strips.emplace_back(stream.begin(), stream.end());
  }
  return jpegImage(page, std::move(strips), rowsPerStrip);
}

LibjpegReading read(const EncodedImage& image) {
  LibjpegReading all;
  for (const Bytes& strip : image.strips) {
    LibjpegReading reading = readWithLibjpeg(strip);
    EXPECT_EQ(reading.messages, "");
    all.steps = reading.steps;
    all.pixels.pixels.insert(all.pixels.pixels.end(), reading.pixels.pixels.begin(),
                             reading.pixels.pixels.end());
  }
  return all;
}

double squaredError(const Bytes& left, const Bytes& right) {
  double sum = 0;
  for (std::size_t i = 0; i < left.size(); ++i) sum += std::pow(left[i] - right[i], 2);
  return left.size() == right.size() ? sum : INFINITY;
}

struct Source {
  std::uint16_t samples;
  std::uint32_t width, height, rowsPerStrip;
  const char* options;
};

const Source kSources[] = {
    {1, 200, 120, 10000, ""},
    {3, 301, 203, 10000, ""},
    {3, 301, 203, 10000, "-sample 2x1"},
    {3, 301, 203, 10000, "-sample 1x1 -optimize"},
    {3, 301, 203, 10000, "-restart 7B"},
    {1, 83, 45, 10000, "-restart 1 -optimize"},
    {3, 150, 203, 16, ""},
    {3, 150, 331, 32, "-optimize"},
    {3, 150, 203, 48, "-restart 2B"},
    {1, 150, 203, 8, "-sample 2x2"},
    {3, 8, 8, 10000, ""},
};

// Tables that are coarser already: all coefficients stay, and with them every pixel.
TEST(JpegTranscode, CopiesAPageThatIsCoarseEnough) {
  for (const Source& source : kSources) {
    SCOPED_TRACE(source.options);
    const Raster page = scan(source.samples, source.width, source.height);
    const EncodedImage image =
        encodedByCjpeg(page, std::string("-quality 60 ") + source.options, source.rowsPerStrip);
    const auto copy = transcodeJpeg(image, {20, 16});
    ASSERT_TRUE(copy);
    ASSERT_EQ(copy->strips.size(), 1u);
    EXPECT_EQ(copy->rowsPerStrip, page.height);
    const LibjpegReading before = read(image);
    const LibjpegReading after = read(*copy);
    EXPECT_EQ(after.steps, before.steps);
    EXPECT_TRUE(after.pixels.pixels == before.pixels.pixels);
    const Bytes density(copy->strips[0].begin() + 13, copy->strips[0].begin() + 18);
    EXPECT_EQ(density, (Bytes{1, 1, 0x2C, 1, 0x2C}));
  }
}

TEST(JpegTranscode, TakesTheLargerStepsAndLosesLessThanDecodingAndEncoding) {
  for (const Source& source : kSources) {
    for (const auto& [quality, factors] : {std::pair{"80,40", JpegFactors{40, 32}},
                                           {"90", {20, 16}},
                                           {"85", {60, 48}},
                                           {"98", {40, 32}}}) {
      SCOPED_TRACE(std::string(source.options) + " from quality " + quality);
      const Raster page = scan(source.samples, source.width, source.height);
      const EncodedImage image = encodedByCjpeg(
          page, std::string("-quality ") + quality + " " + source.options, source.rowsPerStrip);
      const auto result = transcodeJpeg(image, factors);
      ASSERT_TRUE(result);
      const LibjpegReading before = read(image);
      const LibjpegReading after = read(*result);
      Raster decoded = page;
      decoded.pixels = before.pixels.pixels;
      const LibjpegReading detour = read(encodeJpeg(decoded, factors, {}));
      for (std::size_t i = 0; i < after.steps.size(); ++i) {
        for (std::size_t k = 0; k < 64; ++k) {
          ASSERT_EQ(after.steps[i][k], std::max(before.steps[i][k], detour.steps[i][k]));
        }
      }
      if (page.width < 150) continue;  // too little to tell by
      EXPECT_LE(squaredError(after.pixels.pixels, page.pixels),
                squaredError(detour.pixels.pixels, page.pixels));
    }
  }
}

TEST(JpegTranscode, LeavesOtherKindsOfStreamsToTheirPixels) {
  const Raster page = scan(3, 64, 48);
  for (const char* options : {"-progressive", "-arithmetic", "-rgb", "-sample 4x1", "-sample 1x2",
                              "-sample 2x2,2x1,1x1"}) {
    EXPECT_FALSE(transcodeJpeg(encodedByCjpeg(page, options), {})) << options;
  }
  const auto leaves = [&page](void (*change)(EncodedImage&)) {
    EncodedImage image = encodedByCjpeg(page, "", 16);
    change(image);
    return !transcodeJpeg(image, {});
  };
  EXPECT_FALSE(leaves([](EncodedImage&) {}));
  EXPECT_TRUE(leaves([](EncodedImage& image) { image.photometric = Photometric::Rgb; }));
  EXPECT_TRUE(leaves([](EncodedImage& image) { image.compression = Compression::Lzw; }));
  EXPECT_TRUE(leaves([](EncodedImage& image) { image.width = 63; }));
  EXPECT_TRUE(leaves([](EncodedImage& image) { image.height = 47; }));
  EXPECT_TRUE(leaves([](EncodedImage& image) { image.rowsPerStrip = 0; }));
  EXPECT_TRUE(leaves([](EncodedImage& image) { image.strips.pop_back(); }));
  EXPECT_FALSE(transcodeJpeg(encodedByCjpeg(page, "", 24), {}));  // ends within an MCU
}

void damage(Bytes& stream, Random& random) {
  const std::uint32_t at = 2 + random.below(stream.size() - 2);
  switch (random.below(4)) {
    case 0:
      stream[at] ^= static_cast<std::uint8_t>(1u << random.below(8));
      break;
    case 1:
      stream[at] = static_cast<std::uint8_t>(random.next());
      break;
    case 2:
      stream.erase(stream.begin() + at);
      break;
    default:
      stream.resize(at);
  }
}

TEST(JpegTranscode, NoticesAllDamageThatLibjpegNotices) {
  int noticed = 0;
  int noticedByLibjpeg = 0;
  for (const Source& source : kSources) {
    const Raster page = scan(source.samples, std::min(source.width, 90u), source.height / 3 + 1);
    const EncodedImage whole = encodedByCjpeg(page, source.options);
    Random random(source.width + source.height);
    for (int i = 0; i < 400; ++i) {
      EncodedImage image = whole;
      damage(image.strips[0], random);
      std::string messages = readWithLibjpeg(image.strips[0]).messages;
      // Of the application's segment, which is written anew.
      if (messages.find("unknown JFIF revision") != std::string::npos) messages.clear();
      noticedByLibjpeg += messages.empty() ? 0 : 1;
      bool passed = false;
      try {
        const auto result = transcodeJpeg(image, {static_cast<std::int16_t>(20 * (i % 3)), 16});
        passed = result.has_value();
        if (passed) {
          EXPECT_EQ(readWithLibjpeg(result->strips[0]).messages, "");
        }
      } catch (const Failure&) {
        ++noticed;
      }
      ASSERT_FALSE(passed && !messages.empty())
          << source.options << " try " << i << ": " << messages;
    }
  }
  EXPECT_GT(noticedByLibjpeg, 1000);
  EXPECT_GT(noticed, noticedByLibjpeg);
}

}  // namespace
}  // namespace orvane::test
