#include "imaging/lzw/lossless.h"

#include <gtest/gtest.h>

#include "imaging/libtiff_judge.h"
#include "imaging/pages.h"
#include "imaging/raster/bit_streams.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

// What libtiff reads, with its messages instead where it has any.
Bytes readBack(const EncodedImage& image, SampleOrder order = SampleOrder::LittleEndian) {
  const LibtiffReading reading = readWithLibtiff(image, order == SampleOrder::BigEndian);
  EXPECT_EQ(reading.messages, "");
  return reading.pixels;
}

EncodedImage lzwOf(const Bytes& bytes) {
  const auto width = static_cast<std::uint32_t>(bytes.size());
  const Raster row{form(ColourModel::Palette, 8), width, 1, bytes};  // takes no predictor
  return encodeLzw(row, SampleOrder::LittleEndian);
}

// The strip that libtiff's encoder makes of the bytes that an image decodes to.
Bytes encodedByLibtiff(const EncodedImage& image, const Bytes& bytes) {
  std::string messages;
  {
    const TiffPointer tiff = openTiff(memoryFile(), "wl", messages);
    setTags(tiff.get(), image);
    Bytes strip = bytes;
    TIFFWriteEncodedStrip(tiff.get(), 0, strip.data(), std::ssize(strip));
  }
  const TiffPointer tiff = openTiff(memoryFile(), "r", messages);
  Bytes strip(TIFFRawStripSize64(tiff.get(), 0));
  TIFFReadRawStrip(tiff.get(), 0, strip.data(), std::ssize(strip));
  EXPECT_EQ(messages, "");
  return strip;
}

// No pair of bytes occurs twice, so every byte is a code. The width changes after 254, 766 and 1790
// codes, and the table is full after 3837.
TEST(Lzw, WritesEveryCodeWidthAndTheEndOfStrip) {
  Bytes bytes;
  for (int step = 1; step < 32; step += 2) {
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<std::uint8_t>(i * step + step));
  }
  for (const int codes : {4, 254, 766, 1790, 3837}) {
    for (int length = codes - 3; length <= codes + 3; ++length) {
      const Bytes beginning(bytes.begin(), bytes.begin() + length);
      const EncodedImage image = lzwOf(beginning);
      ASSERT_EQ(readBack(image), beginning) << length;
      if (length > 3835) continue;  // libtiff clears a full table before the end
      ASSERT_EQ(image.strips[0], encodedByLibtiff(image, beginning)) << length;
    }
  }
}

// 254 codes of 9 bits, 512 of 10, 1024 of 11 and 2047 of 12, the last of them 4094.
TEST(Lzw, ClearsTheTableAsSoonAsItIsFull) {
  Random random(8);
  Bytes bytes(20000);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random.below(256));
  const EncodedImage image = lzwOf(bytes);
  BitReader bits(image.strips[0]);
  for (const auto& [count, width] : {std::pair{1 + 254, 9}, {512, 10}, {1024, 11}, {2047, 12}}) {
    for (int i = 0; i < count; ++i) bits.refill(), bits.skip(width);
  }
  bits.refill();
  EXPECT_EQ(bits.bits() >> 52, 256u);
}

TEST(Lossless, KeepsEveryFormInBothByteOrders) {
  for (const RasterForm& kind : {form(ColourModel::MinIsWhite, 1), form(ColourModel::Palette, 4),
                                 form(ColourModel::Palette, 8), form(ColourModel::MinIsBlack, 8),
                                 form(ColourModel::MinIsBlack, 16), form(ColourModel::Cmyk, 8, 4),
                                 form(ColourModel::Rgb, 16, 4, ExtraSample::UnassociatedAlpha)}) {
    Random random(kind.bitsPerSample);
    const Raster page = scannedPage(random, kind, 301, 377);
    for (const SampleOrder order : {SampleOrder::LittleEndian, SampleOrder::BigEndian}) {
      const EncodedImage lzw = encodeLzw(page, order), plain = encodeUncompressed(page, order);
      const bool isQuantity = kind.bitsPerSample == 8 && kind.model != ColourModel::Palette;
      EXPECT_EQ(lzw.horizontalPredictor, isQuantity);
      EXPECT_TRUE(readBack(lzw, order) == page.pixels);
      EXPECT_TRUE(readBack(plain, order) == page.pixels);
    }
  }
}

TEST(Lossless, KeepsPagesOfAnyWidthAndMakesThemFewerBytes) {
  for (const auto& [width, height] : {std::pair{1u, 1u}, {700u, 300u}, {140000u, 3u}}) {
    Random random(width);
    const Raster page = scannedPage(random, form(ColourModel::Rgb, 8, 3), width, height);
    const EncodedImage lzw = encodeLzw(page, SampleOrder::LittleEndian);
    const EncodedImage plain = encodeUncompressed(page, SampleOrder::LittleEndian);
    std::size_t sizes[2] = {0, 0};
    for (const EncodedImage* image : {&lzw, &plain}) {
      ASSERT_TRUE(readBack(*image) == page.pixels) << width;
      EXPECT_EQ(image->strips.size(), (page.height - 1) / image->rowsPerStrip + 1);
      for (const Bytes& strip : image->strips) sizes[image == &plain] += strip.size();
    }
    EXPECT_LT(sizes[0], sizes[1] * 3 / 4 + 20);
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
