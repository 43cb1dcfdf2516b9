#include "imaging/codecs/lossless.h"

#include <gtest/gtest.h>
#include <leptonica/allheaders.h>
#include <tiffio.h>

#include "foundation/Failure.h"
#include "imaging/codecs/colour_pages.h"
#include "imaging/codecs/libtiff_judge.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using Encode = EncodedImage (*)(const Raster&, SampleOrder);

void expectSameForm(const EncodedImage& image, const Raster& page) {
  const bool gray = page.model == ColourModel::MinIsWhite || page.model == ColourModel::MinIsBlack;
  EXPECT_EQ(image.samplesPerPixel, page.samplesPerPixel);
  EXPECT_EQ(image.palette, page.palette);
  EXPECT_EQ(gray, image.photometric == Photometric::MinIsWhite ||
                      image.photometric == Photometric::MinIsBlack);
  EXPECT_EQ(image.horizontalPredictor, image.compression == Compression::Lzw &&
                                           page.bitsPerSample >= 8 && page.palette.empty());
  EXPECT_EQ(image.strips.size(), (page.height - 1) / image.rowsPerStrip + 1);
}

TEST(Lossless, KeepsEverySampleOfEveryForm) {
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> sizes = {
      {1, 1}, {61, 45}, {700, 300}, {140000, 3}};
  for (const Encode encode : {&encodeLzw, &encodeUncompressed}) {
    for (const Raster& form : allForms()) {
      for (const auto& [width, height] : sizes) {
        SCOPED_TRACE(std::to_string(form.bitsPerPixel()) + " bits, width " + std::to_string(width));
        Random random(width + form.bitsPerPixel());
        const Raster page = scannedPage(random, form, width, height);
        for (const bool big : {false, true}) {
          const EncodedImage image =
              encode(page, big ? SampleOrder::BigEndian : SampleOrder::LittleEndian);
          const LibtiffReading reading = readWithLibtiff(image, big);
          ASSERT_EQ(reading.messages, "");
          ASSERT_TRUE(reading.pixels == page.pixels);
          expectSameForm(image, page);
        }
      }
    }
  }
}

Raster oneRow(Bytes pixels) {
  Raster row;
  row.width = static_cast<std::uint32_t>(pixels.size());
  row.height = 1;
  row.bitsPerSample = 8;
  row.model = ColourModel::Palette;  // takes no predictor
  row.palette.resize(3 * 256);
  row.pixels = std::move(pixels);
  return row;
}

// Up to the first full table the code stream can only be one: that of libtiff.
TEST(Lzw, WritesEveryCodeWidthAndTheEndOfStripAsLibtiffDoes) {
  Random random(7);
  Bytes pixels;
  for (int length = 1; length < 3600; ++length) {
    pixels.push_back(static_cast<std::uint8_t>(random.next()));
    const Raster row = oneRow(pixels);
    ASSERT_EQ(encodeLzw(row, SampleOrder::LittleEndian).strips,
              encodeWithLibtiff(row, COMPRESSION_LZW, 1))
        << length;
  }
}

TEST(Lzw, FillsItsTableWithAnyKindOfBytes) {
  Random random(3);
  for (int kind = 0; kind < 12; ++kind) {
    Bytes pixels(200000);
    std::uint8_t value = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      if (kind < 6) value = static_cast<std::uint8_t>(random.below(std::uint64_t{1} << kind));
      if (kind == 6) value = static_cast<std::uint8_t>(i);
      if (kind == 7) value = static_cast<std::uint8_t>(i / 5000);
      if (kind == 8) value = static_cast<std::uint8_t>(i * i >> 9);
      if (kind >= 9) value = static_cast<std::uint8_t>(value + random.below(kind - 7));
      pixels[i] = value;
    }
    const Raster row = oneRow(pixels);
    const EncodedImage image = encodeLzw(row, SampleOrder::LittleEndian);
    const LibtiffReading reading = readWithLibtiff(image);
    ASSERT_EQ(reading.messages, "") << kind;
    ASSERT_TRUE(reading.pixels == pixels) << kind;
    // libtiff also begins a new table where the data changes its kind.
    const std::size_t peer = encodeWithLibtiff(row, COMPRESSION_LZW, 1)[0].size();
    EXPECT_LE(image.strips[0].size(), peer + peer / 8) << kind;
  }
}

Raster formOfDepth(std::uint16_t bits, std::uint16_t samples, ColourModel model) {
  for (const Raster& form : allForms()) {
    if (form.bitsPerSample == bits && form.samplesPerPixel == samples && form.model == model) {
      return form;
    }
  }
  throw std::runtime_error("no such form");
}

std::uint32_t sampleAt(PIX* pix, std::uint32_t x, std::uint32_t y, std::uint32_t sample) {
  l_uint32 pixel = 0;
  pixGetPixel(pix, static_cast<l_int32>(x), static_cast<l_int32>(y), &pixel);
  return pixGetDepth(pix) == 32 ? pixel >> (24 - 8 * sample) & 255 : pixel;
}

TEST(Lzw, IsReadByOtherReaders) {
  const TempStation station;
  const auto file = station.native("page.tif");
  for (const std::uint16_t samples : {std::uint16_t{1}, std::uint16_t{3}}) {
    Random random(samples);
    const auto model = samples == 3 ? ColourModel::Rgb : ColourModel::MinIsBlack;
    const Raster page = scannedPage(random, formOfDepth(8, samples, model), 333, 222);
    writeTiff(file, encodeLzw(page, SampleOrder::LittleEndian));
    const std::string form = samples == 3 ? "rgb:-" : "gray:-";
    EXPECT_TRUE(outputOf("convert " + quoted(file) + " -depth 8 " + form) ==
                std::string(page.pixels.begin(), page.pixels.end()));
    PIX* pix = pixRead(file.c_str());
    ASSERT_NE(pix, nullptr);
    int wrong = 0;
    for (std::uint32_t y = 0; y < page.height; ++y) {
      for (std::uint32_t i = 0; i < page.rowBytes(); ++i) {
        wrong += sampleAt(pix, i / samples, y, i % samples) != page.row(y)[i];
      }
    }
    EXPECT_EQ(wrong, 0);
    pixDestroy(&pix);
  }
}

TEST(Lossless, RefusesRastersThatContradictThemselves) {
  Random random(1);
  const Raster page = scannedPage(random, formOfDepth(8, 3, ColourModel::Rgb), 9, 9);
  const auto refuses = [&page](void (*change)(Raster&)) {
    Raster changed = page;
    change(changed);
    EXPECT_THROW(encodeLzw(changed, SampleOrder::LittleEndian), Failure);
    EXPECT_THROW(encodeUncompressed(changed, SampleOrder::BigEndian), Failure);
  };
  refuses([](Raster& raster) { raster.height = 0; });
  refuses([](Raster& raster) { raster.width = 0; });
  refuses([](Raster& raster) { raster.height = 10; });
  refuses([](Raster& raster) { raster.model = ColourModel::Cmyk; });
  refuses([](Raster& raster) { raster.extraSample = ExtraSample::Unspecified; });
  refuses([](Raster& raster) {
    raster.model = ColourModel::Palette;
    raster.samplesPerPixel = 1;
  });
}

}  // namespace
}  // namespace orvane::test
