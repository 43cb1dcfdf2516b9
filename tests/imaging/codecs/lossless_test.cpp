#include "imaging/codecs/lossless.h"

#include <gtest/gtest.h>

#include "imaging/codecs/libtiff_judge.h"
#include "imaging/codecs/pages.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

// What libtiff reads, with its messages instead where it has any.
Bytes readBack(const EncodedImage& image, bool bigEndian = false) {
  const LibtiffReading reading = readWithLibtiff(image, bigEndian);
  EXPECT_EQ(reading.messages, "");
  return reading.pixels;
}

TEST(Lossless, KeepsEverySampleOfEveryForm) {
  for (const Raster& form : allForms()) {
    for (const auto& [width, height] :
         {std::pair{1u, 1u}, {61u, 45u}, {700u, 300u}, {140000u, 3u}}) {
      SCOPED_TRACE(std::to_string(form.bitsPerPixel()) + " bits, width " + std::to_string(width));
      Random random(width + form.bitsPerPixel());
      const Raster page = scannedPage(random, form, width, height);
      for (const bool big : {false, true}) {
        const SampleOrder order = big ? SampleOrder::BigEndian : SampleOrder::LittleEndian;
        for (const EncodedImage& image :
             {encodeLzw(page, order), encodeUncompressed(page, order)}) {
          ASSERT_TRUE(readBack(image, big) == page.pixels);
          EXPECT_EQ(image.palette, page.palette);
          EXPECT_EQ(image.horizontalPredictor, image.compression == Compression::Lzw &&
                                                   page.bitsPerSample >= 8 && page.palette.empty());
          EXPECT_EQ(image.strips.size(), (page.height - 1) / image.rowsPerStrip + 1);
        }
      }
    }
  }
}

EncodedImage lzwOf(const Bytes& bytes) {
  Raster row = form(ColourModel::Palette, 8);  // takes no predictor
  row.width = static_cast<std::uint32_t>(bytes.size());
  row.height = 1;
  row.pixels = bytes;
  return encodeLzw(row, SampleOrder::LittleEndian);
}

TEST(Lzw, WritesEveryCodeWidthAndTheEndOfStrip) {
  Random random(7);
  Bytes bytes;
  for (int length = 1; length < 4200; ++length) {
    bytes.push_back(static_cast<std::uint8_t>(random.below(256)));
    ASSERT_EQ(readBack(lzwOf(bytes)), bytes) << length;
  }
}

TEST(Lzw, FillsItsTableWithAnyKindOfBytesAndMakesThemFewer) {
  Random random(3);
  for (int kind = 0; kind < 9; ++kind) {
    Bytes bytes(200000);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const std::uint32_t number = random.below(1 << kind);
      bytes[i] = static_cast<std::uint8_t>(kind == 7 ? i * i >> 9 : number);
    }
    const EncodedImage image = lzwOf(bytes);
    ASSERT_TRUE(readBack(image) == bytes) << kind;
    // A byte has `kind` bits of news; codes take some more.
    if (kind < 6) {
      EXPECT_LT(image.strips[0].size(), bytes.size() * (kind + 2) / 8) << kind;
    }
  }
}

TEST(Lossless, RefusesRastersThatContradictThemselves) {
  void (*const changes[])(Raster&){
      [](Raster& raster) { raster.height = 0; },
      [](Raster& raster) { raster.width = 0; },
      [](Raster& raster) { raster.height = 10; },
      [](Raster& raster) { raster.model = ColourModel::Cmyk; },
      [](Raster& raster) { raster.extraSample = ExtraSample::Unspecified; },
      [](Raster& raster) { raster.model = ColourModel::Palette, raster.samplesPerPixel = 1; }};
  for (const auto& change : changes) {
    Raster page = emptyRaster(form(ColourModel::Rgb, 8, 3), 9, 9);
    change(page);
    EXPECT_THROW(encodeLzw(page, SampleOrder::LittleEndian), Failure);
    EXPECT_THROW(encodeUncompressed(page, SampleOrder::BigEndian), Failure);
  }
}

}  // namespace
}  // namespace orvane::test
