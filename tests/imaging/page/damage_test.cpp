#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

#include "foundation/Failure.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/pixels16.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

struct NamedKind {
  const char* name;
  TiffKind kind;
};

std::vector<NamedKind> kindsOfDamage() {
  TiffKind bilevel{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE, .rowsPerStrip = 150};
  bilevel.width = 203, bilevel.height = 150;
  TiffKind colour{.samples = 3, .photometric = PHOTOMETRIC_RGB, .rowsPerStrip = 50};
  colour.width = 203, colour.height = 150;
  std::vector<NamedKind> kinds;
  const auto add = [&](const char* name, TiffKind kind, std::uint16_t compression) {
    kind.compression = compression, kind.directoryFirst = true;
    kinds.push_back({name, kind});
  };
  add("G4", bilevel, COMPRESSION_CCITTFAX4);
  add("G3", bilevel, COMPRESSION_CCITTFAX3);
  add("none", colour, COMPRESSION_NONE);
  add("PackBits", colour, COMPRESSION_PACKBITS);
  add("LZW", colour, COMPRESSION_LZW);
  add("Deflate", colour, COMPRESSION_ADOBE_DEFLATE);
  colour.predictor = PREDICTOR_HORIZONTAL;
  add("LZW, predictor", colour, COMPRESSION_LZW);
  colour.predictor = 0, colour.rowsPerStrip = 150;
  add("JPEG RGB", colour, COMPRESSION_JPEG);
  colour.photometric = PHOTOMETRIC_YCBCR;
  add("JPEG YCbCr", colour, COMPRESSION_JPEG);
  colour.rowsPerStrip = 0;
  add("JPEG tiles", colour, COMPRESSION_JPEG);
  return kinds;
}

// Pages whose directory stands in front of the image data: they still load when the end is gone.
std::string fileOf(const TempStation& station, const TiffKind& kind) {
  writeTiff(station.native("whole.tif"), kind);
  return readBytes(station.native("whole.tif"));
}

std::size_t beginOfData(const TempStation& station) {
  std::uint64_t first = UINT64_MAX;
  TIFF* tiff = TIFFOpen(station.native("whole.tif").c_str(), "r");
  const std::uint32_t blocks =
      TIFFIsTiled(tiff) ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  for (std::uint32_t i = 0; i < blocks; ++i) first = std::min(first, TIFFGetStrileOffset(tiff, i));
  TIFFClose(tiff);
  return static_cast<std::size_t>(first);
}

bool isWhite(const Raster& raster, std::uint32_t y) {
  Raster row = formOf(raster);
  row.width = raster.width, row.height = 1;
  row.pixels.assign(raster.row(y), raster.row(y) + raster.rowBytes());
  const Pixels16 pixels = pixelsOf(row);
  return std::all_of(pixels.begin(), pixels.end(),
                     [](std::uint16_t value) { return value == 0xFFFF; });
}

TEST(Damage, ACutPageKeepsItsBeginningAndIsWhiteBehind) {
  const TempStation station;
  for (const NamedKind& named : kindsOfDamage()) {
    const std::string whole = fileOf(station, named.kind);
    const Raster expected = TiffPage(station.path(L"whole.tif"), 1).decode().raster;
    const std::size_t begin = beginOfData(station);
    for (int twentieth = 0; twentieth < 20; ++twentieth) {
      SCOPED_TRACE(named.name + (", " + std::to_string(twentieth)));
      writeBytes(station.native("cut.tif"),
                 whole.substr(0, begin + 1 + (whole.size() - begin - 1) * twentieth / 20));
      const TiffPage page(station.path(L"cut.tif"), 1);
      const DecodedPage decoded = page.decode();
      ASSERT_TRUE(decoded.damage.has_value());
      EXPECT_EQ(page.group4Strips(), std::nullopt);
      ASSERT_EQ(decoded.raster.pixels.size(), expected.pixels.size());
      if (twentieth == 0) {
        EXPECT_TRUE(isWhite(decoded.raster, expected.height - 1));
      }
      if (twentieth < 16) continue;  // by now more than the first rows are there
      EXPECT_TRUE(std::equal(decoded.raster.row(0), decoded.raster.row(30), expected.row(0)));
    }
  }
}

// Whatever makes libtiff's own tool complain is damage here.
TEST(Damage, EveryFlippedByteThatLibtiffNoticesIsTold) {
  const TempStation station;
  std::mt19937 random(20240511);
  for (const NamedKind& named : kindsOfDamage()) {
    const std::string whole = fileOf(station, named.kind);
    const std::size_t begin = beginOfData(station);
    int noticed = 0;
    for (int i = 0; i < 40; ++i) {
      std::string damaged = whole;
      const std::size_t at = begin + random() % (whole.size() - begin);
      damaged[at] = static_cast<char>(damaged[at] ^ (1 + random() % 255));
      writeBytes(station.native("damaged.tif"), damaged);
      const DecodedPage decoded = TiffPage(station.path(L"damaged.tif"), 1).decode();
      const CommandResult tool =
          runCommand("tiffcp -c none " + quoted(station.native("damaged.tif")) + " " +
                     quoted(station.native("copy.tif")));
      const bool complains = tool.exitCode != 0 || !tool.output.empty();
      EXPECT_EQ(decoded.damage.has_value(), complains) << named.name << " at " << at << tool.output;
      if (complains) ++noticed;
    }
    const std::uint16_t compression = named.kind.compression;
    if (compression != COMPRESSION_NONE && compression != COMPRESSION_PACKBITS) {
      EXPECT_GT(noticed, 0) << named.name;
    }
  }
}

// The file is longer than what is read at once, so that its end goes while the page is open.
TEST(Damage, AFileThatShrinksWhileItIsOpenIsDamaged) {
  const TempStation station;
  TiffKind kind = kindsOfDamage()[2].kind;
  kind.width = 2000, kind.height = 1000;
  writeTiff(station.native("page.tif"), kind);
  const TiffPage page(station.path(L"page.tif"), 1);
  std::filesystem::resize_file(station.native("page.tif"), 3'000'000);
  const DecodedPage decoded = page.decode();
  EXPECT_TRUE(decoded.damage.has_value());
  EXPECT_FALSE(isWhite(decoded.raster, 0));
  EXPECT_TRUE(isWhite(decoded.raster, 999));
}

}  // namespace
}  // namespace orvane::test
