#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

#include "imaging/page/TiffPage.h"
#include "imaging/page/pixels16.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using Values = std::initializer_list<std::uint16_t>;
using Storages = std::vector<std::string>;  ///< options of tiffcp

// ImageMagick shows white gray of 2 and 4 bits as its negative, takes subsampled YCbCr for plain
// samples and knows no tiles of CMYK JPEG.
std::string toolBeforeJudge(const TiffKind& kind) {
  const bool shallow = kind.bits == 2 || kind.bits == 4;
  if (kind.photometric == PHOTOMETRIC_MINISWHITE && shallow) return "tiff2rgba";
  if (kind.photometric == PHOTOMETRIC_YCBCR) return "tiff2rgba";
  if (kind.photometric == PHOTOMETRIC_SEPARATED) return "tiffcp -s -c none";
  return "cp";
}

void expectAsJudged(const TempStation& station, const TiffKind& kind) {
  const TiffPage page(station.path(L"page.tif"), 1);
  const DecodedPage decoded = page.decode();
  EXPECT_EQ(decoded.damage, std::nullopt);
  EXPECT_EQ(page.info().width, decoded.raster.width);
  EXPECT_EQ(page.info().height, decoded.raster.height);
  EXPECT_EQ(page.info().bitsPerPixel, decoded.raster.bitsPerPixel());
  EXPECT_EQ(decoded.raster.bitsPerSample, kind.bits);
  if (kind.separate) {  // it takes the last of several extra planes for alpha: no planes for it
    TiffKind together = kind;
    together.separate = false;
    writeTiff(station.native("judged.tif"), together);
  } else {
    outputOf(toolBeforeJudge(kind) + " " + quoted(station.native("page.tif")) + " " +
             quoted(station.native("judged.tif")));
  }
  std::string channels = kind.photometric == PHOTOMETRIC_SEPARATED ? "cmyk" : "rgb";
  if (!kind.extras.empty()) channels += "a";
  EXPECT_TRUE(pixelsOf(decoded.raster) == judgedPixels(station.native("judged.tif"), channels));
}

void expectAsJudged(const TiffKind& kind, const Storages& storages) {
  const TempStation station;
  writeTiff(station.native("base.tif"), kind);
  for (const std::string& storage : storages) {
    SCOPED_TRACE(std::to_string(kind.samples) + " x " + std::to_string(kind.bits) +
                 " photometric " + std::to_string(kind.photometric) + ": " + storage);
    outputOf("tiffcp " + storage + " " + quoted(station.native("base.tif")) + " " +
             quoted(station.native("page.tif")));
    expectAsJudged(station, kind);
  }
}

const std::vector<std::uint16_t> kAlpha = {EXTRASAMPLE_UNASSALPHA};
const std::vector<std::uint16_t> kAlphaAndMore = {EXTRASAMPLE_UNASSALPHA, EXTRASAMPLE_UNSPECIFIED};

std::vector<TiffKind> colourKinds(std::uint16_t bits) {
  return {{.bits = bits, .samples = 3, .photometric = PHOTOMETRIC_RGB},
          {.bits = bits, .samples = 4, .photometric = PHOTOMETRIC_RGB, .extras = kAlpha},
          {.bits = bits, .samples = 5, .photometric = PHOTOMETRIC_RGB, .extras = kAlphaAndMore},
          {.bits = bits, .samples = 4, .photometric = PHOTOMETRIC_SEPARATED}};
}

TEST(Decoding, SamplesOfEveryDepthInEveryStorageAreExact) {
  const Storages shallow = {"-r 11",
                            "-B",
                            "-c packbits -f lsb2msb",
                            "-c lzw -8 -r 11",
                            "-t -w 32 -l 16",
                            "-c zip -t -w 32 -l 16 -B"};
  Storages deep = shallow;
  deep.insert(deep.end(), {"-c lzw:2 -B -r 11", "-c zip:2 -t -w 32 -l 16"});
  for (const std::uint16_t photometric :
       Values{PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_PALETTE}) {
    for (const std::uint16_t bits : Values{1, 2, 4, 8, 16}) {
      if (photometric == PHOTOMETRIC_PALETTE && bits == 16) continue;
      expectAsJudged({.bits = bits, .photometric = photometric}, bits < 8 ? shallow : deep);
    }
  }
  for (const std::uint16_t bits : Values{8, 16}) {
    for (const TiffKind& kind : colourKinds(bits)) expectAsJudged(kind, deep);
  }
}

TEST(Decoding, FaxAndJpegPagesShowWhatAnOutsideToolSees) {
  const Storages fax = {"-c g3:1d",    "-c g3:1d -f lsb2msb -r 11", "-c g3:2d -B",
                        "-c g4 -r 11", "-c g4 -f lsb2msb",          "-c g4 -t -w 32 -l 16"};
  expectAsJudged({.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE}, fax);
  const Storages jpeg = {"-c jpeg -r 16", "-c jpeg:r:90 -B -r 16", "-c jpeg -t -w 32 -l 16"};
  expectAsJudged({}, jpeg);
  expectAsJudged({.samples = 3, .photometric = PHOTOMETRIC_RGB}, jpeg);  // also as YCbCr
  expectAsJudged({.samples = 4, .photometric = PHOTOMETRIC_SEPARATED}, jpeg);
}

TEST(Decoding, KindsThatTiffcpDoesNotWrite) {
  std::vector<TiffKind> kinds = {
      {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE, .compression = COMPRESSION_CCITTRLE},
      {.samples = 3,
       .photometric = PHOTOMETRIC_YCBCR,
       .compression = COMPRESSION_LZW,
       .rowsPerStrip = 12}};
  for (const std::uint16_t bits : Values{8, 16}) {
    for (TiffKind kind : colourKinds(bits)) {
      kind.separate = true;
      kinds.push_back(kind);
      kind.rowsPerStrip = 0, kind.mode = "wb";
      kind.compression = COMPRESSION_LZW, kind.predictor = PREDICTOR_HORIZONTAL;
      kinds.push_back(kind);
    }
  }
  const TempStation station;
  for (const TiffKind& kind : kinds) {
    SCOPED_TRACE(std::to_string(kind.samples) + " x " + std::to_string(kind.bits) + ", mode " +
                 kind.mode);
    writeTiff(station.native("page.tif"), kind);
    expectAsJudged(station, kind);
  }
}

TEST(Decoding, EveryOrientationComesOutUprightAtEveryDepth) {
  const TempStation station;
  for (const std::uint16_t samples : Values{1, 3, 4}) {
    for (const std::uint16_t bits : Values{1, 2, 4, 8, 16}) {
      if (samples > 1 && bits < 8) continue;
      TiffKind kind{.bits = bits, .samples = samples};
      if (samples >= 3) kind.photometric = PHOTOMETRIC_RGB;
      if (samples == 4) kind.extras = {EXTRASAMPLE_UNASSALPHA};
      for (int orientation = 2; orientation <= 8; ++orientation) {
        SCOPED_TRACE(std::to_string(orientation) + " with bits " + std::to_string(bits));
        writeTiff(station.native("page.tif"), kind);
        outputOf("tiffset -s 274 " + std::to_string(orientation) + " " +
                 quoted(station.native("page.tif")));
        expectAsJudged(station, kind);
      }
    }
  }
}

// libjpeg shows the stream that the old-style page points at.
TEST(Decoding, OldStyleJpegShowsItsStream) {
  const TempStation station;
  const std::string jpeg = outputOf(
      "convert -size 64x48 gradient:red-blue -rotate 30 -crop 64x48+0+0 +repage "
      "-sampling-factor 1x1 -quality 90 jpg:-");
  writeBytes(station.native("old.tif"), rawGrayPage(64, 48, jpeg,
                                                    {{259, 3, 1, 6},
                                                     {262, 3, 1, 6},
                                                     {277, 3, 1, 3},
                                                     {513, 4, 1, 0},
                                                     {514, 4, 1, 0},
                                                     {530, 3, 2, 0x10001}}));
  writeBytes(station.native("old.jpg"), jpeg);
  const DecodedPage decoded = TiffPage(station.path(L"old.tif"), 1).decode();
  EXPECT_EQ(decoded.damage, std::nullopt);
  const Pixels16 judged = judgedPixels(station.native("old.jpg"), "rgb");
  EXPECT_LE(largestDifference(pixelsOf(decoded.raster), judged), 3 * 257);
}

TEST(Decoding, PagesAreFoundByNumber) {
  const TempStation station;
  writeTiff(station.native("base.tif"), {}, 5);
  for (const char* format : {"-L", "-B -8"}) {
    outputOf(std::string("tiffcp ") + format + " " + quoted(station.native("base.tif")) + " " +
             quoted(station.native("pages.tif")));
    EXPECT_EQ(tiffPageCount(station.path(L"pages.tif")), 5);
    for (const int page : {5, 1, 3}) {
      const auto file = station.native("pages.tif[" + std::to_string(page - 1) + "]");
      EXPECT_EQ(pixelsOf(TiffPage(station.path(L"pages.tif"), page).decode().raster),
                judgedPixels(file, "rgb"));
    }
  }
}

TEST(Decoding, ResolutionComesAsDotsPerInch) {
  const TempStation station;
  const struct {
    const char* tags;  // XResolution, YResolution, ResolutionUnit, Orientation; "-" for none
    double dpiX, dpiY;
  } cases[] = {{"300 150 2 1", 300, 150}, {"300 150 2 6", 150, 300},  {"100 200 3 1", 254, 508},
               {"300 300 1 1", 200, 200}, {"400 300 - 1", 400, 300},  {"0 0 2 1", 200, 200},
               {"1e9 1 2 1", 200, 200},   {"600 - 2 1", 600, 600},    {"- - - 1", 200, 200},
               {"- 150 2 8", 150, 150},   {"65000 300 3 1", 762, 762}};
  for (const auto& [tags, dpiX, dpiY] : cases) {
    writeTiff(station.native("page.tif"), {});
    outputOf("set -- " + std::string(tags) +
             "; for tag in 282 283 296 274; do [ $1 = - ] || tiffset "
             "-s $tag $1 " +
             quoted(station.native("page.tif")) + "; shift; done");
    const Resolution resolution = TiffPage(station.path(L"page.tif"), 1).info().resolution;
    EXPECT_NEAR(resolution.x, dpiX, 1e-4) << tags;
    EXPECT_NEAR(resolution.y, dpiY, 1e-4) << tags;
  }
}

}  // namespace
}  // namespace orvane::test
