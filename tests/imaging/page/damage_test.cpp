#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

const TiffKind kBilevel{
    .bits = 1, .photometric = PHOTOMETRIC_MINISWHITE, .width = 203, .height = 150};
const TiffKind kGray{.width = 203, .height = 150};
const TiffKind kColour{.samples = 3, .photometric = PHOTOMETRIC_RGB, .width = 203, .height = 150};

void writeDamageable(const TempStation& station, const TiffKind& kind, const std::string& storage) {
  writeTiff(station.native("base.tif"), kind);
  outputOf("tiffcp " + storage + " " + quoted(station.native("base.tif")) + " " +
           quoted(station.native("whole.tif")));
}

bool isWhite(const Raster& raster, std::uint32_t y) {
  const std::uint8_t white = raster.model == ColourModel::MinIsWhite ? 0 : 0xFF;
  return std::all_of(raster.row(y), raster.row(y) + raster.rowBytes(),
                     [&](std::uint8_t byte) { return byte == white; });
}

// The strip of a page, alone in a file behind its directory, so that the page still loads when the
// end is gone.
std::string stripLast(const TempStation& station, const RawEntry& compression) {
  TIFF* tiff = TIFFOpen(station.native("whole.tif").c_str(), "rc");
  std::string strip(TIFFGetStrileByteCount(tiff, 0), '\0');
  TIFFReadRawStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
  std::uint16_t bits = 8, photometric = 1;
  TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
  TIFFClose(tiff);
  if (compression.value == COMPRESSION_JPEG) {  // with its tables
    strip = outputOf("convert " + quoted(station.native("base.tif")) + " jpg:-");
  }
  return rawGrayPage(203, 150, strip, {compression, {258, 3, 1, bits}, {262, 3, 1, photometric}});
}

TEST(Damage, ACutPageKeepsItsBeginningAndIsWhiteBehind) {
  const TempStation station;
  const struct {
    const char* storage;
    TiffKind kind;
    std::uint32_t compression;
  } cases[] = {{"-c none", kGray, 1}, {"-c g3", kBilevel, 3}, {"-c g4", kBilevel, 4},
               {"-c lzw", kGray, 5},  {"-c jpeg", kGray, 7},  {"-c packbits", kGray, 32773}};
  for (const auto& [storage, kind, compression] : cases) {
    writeDamageable(station, kind, std::string(storage) + " -r 160");
    const std::string whole = stripLast(station, {259, 3, 1, compression});
    writeBytes(station.native("cut.tif"), whole);
    const DecodedPage expected = TiffPage(station.path(L"cut.tif"), 1).decode();
    ASSERT_EQ(expected.damage, std::nullopt) << storage;
    for (std::size_t length = whole.size() - 8; length > 140; length -= whole.size() / 20) {
      writeBytes(station.native("cut.tif"), whole.substr(0, length));
      const TiffPage page(station.path(L"cut.tif"), 1);
      const DecodedPage decoded = page.decode();
      ASSERT_TRUE(decoded.damage.has_value()) << storage << " " << length;
      EXPECT_FALSE(page.group4Strips().has_value());
      ASSERT_EQ(decoded.raster.pixels.size(), expected.raster.pixels.size());
      const Raster& raster = decoded.raster;
      if (length > whole.size() / 2) {
        EXPECT_TRUE(std::equal(raster.row(0), raster.row(40), expected.raster.row(0))) << storage;
      } else if (compression != COMPRESSION_JPEG) {  // libjpeg goes on with the last colour
        EXPECT_TRUE(isWhite(raster, 149)) << storage << " " << length;
      }
    }
  }
}

// Whatever makes libtiff's own tool complain is damage here, and nothing else.
TEST(Damage, EveryFlippedByteThatLibtiffNoticesIsTold) {
  const TempStation station;
  std::mt19937 random(20240511);
  const std::pair<std::string, TiffKind> cases[] = {{"-c g4", kBilevel},
                                                    {"-c g3:2d", kBilevel},
                                                    {"-c lzw -r 50", kColour},
                                                    {"-c lzw:2", kColour},
                                                    {"-c zip", kColour},
                                                    {"-c jpeg -r 160", kColour},
                                                    {"-c jpeg -t -w 64 -l 64", kColour}};
  for (const auto& [storage, kind] : cases) {
    writeDamageable(station, kind, storage);
    const std::string whole = readBytes(station.native("whole.tif"));
    int noticed = 0;
    for (int i = 0; i < 40; ++i) {
      std::string damaged = whole;
      const std::size_t at = 8 + random() % (whole.size() - 600);  // image data, no directory
      damaged[at] = static_cast<char>(damaged[at] ^ (1 + random() % 255));
      writeBytes(station.native("damaged.tif"), damaged);
      const DecodedPage decoded = TiffPage(station.path(L"damaged.tif"), 1).decode();
      const CommandResult tool =
          runCommand("tiffcp -c none " + quoted(station.native("damaged.tif")) + " " +
                     quoted(station.native("copy.tif")));
      const bool complains = tool.exitCode != 0 || !tool.output.empty();
      EXPECT_EQ(decoded.damage.has_value(), complains) << storage << " " << at << tool.output;
      noticed += complains ? 1 : 0;
    }
    EXPECT_GT(noticed, 0) << storage;
  }
}

// The file is longer than what is read at once, so that its end goes while the page is open.
TEST(Damage, AFileThatShrinksWhileItIsOpenIsDamaged) {
  const TempStation station;
  writeBytes(station.native("page.tif"), rawGrayPage(3000, 2000, std::string(6'000'000, 'x')));
  const TiffPage page(station.path(L"page.tif"), 1);
  std::filesystem::resize_file(station.native("page.tif"), 3'000'000);
  const DecodedPage decoded = page.decode();
  EXPECT_TRUE(decoded.damage.has_value());
  EXPECT_TRUE(isWhite(decoded.raster, 1999));
}

}  // namespace
}  // namespace orvane::test
