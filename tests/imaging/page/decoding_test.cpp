#include <gmock/gmock.h>
#include <initializer_list>
#include <limits>
#include <string>

#include "foundation/path_text.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/pixels16.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

struct NamedKind {
  std::string name;
  TiffKind kind;
};

// ImageMagick shows white gray of 2 and 4 bits as its negative, takes subsampled YCbCr for plain
// samples and the last of several extra planes for alpha, and knows no tiles of CMYK JPEG.
std::string toolBeforeJudge(const TiffKind& kind) {
  const bool shallow = kind.bits == 2 || kind.bits == 4;
  if (kind.photometric == PHOTOMETRIC_MINISWHITE && shallow) return "tiff2rgba";
  const bool subsampled = kind.subsampling > 1 && kind.compression != COMPRESSION_JPEG;
  if (subsampled) return "tiff2rgba";
  if (kind.separate && kind.samples > 4) return "tiffcp -p contig";
  if (kind.compression == COMPRESSION_JPEG && kind.samples == 4) return "tiffcp -s -c none";
  return {};
}

// One kind varied by all the ways of storing its samples.
void addStorages(std::vector<NamedKind>& kinds, const std::string& name, const TiffKind& kind) {
  const auto add = [&](const char* how, auto change) {
    TiffKind varied = kind;
    change(varied);
    kinds.push_back({name + ", " + how, varied});
  };
  add("strips", [](TiffKind&) {});
  add("one strip, big-endian", [](TiffKind& k) { k.rowsPerStrip = 64, k.mode = "wb"; });
  add("tiles", [](TiffKind& k) { k.rowsPerStrip = 0; });
  add("PackBits, fill order 2",
      [](TiffKind& k) { k.compression = COMPRESSION_PACKBITS, k.fillOrder = FILLORDER_LSB2MSB; });
  add("LZW, BigTIFF", [](TiffKind& k) { k.compression = COMPRESSION_LZW, k.mode = "wl8"; });
  add("Deflate, tiles, big-endian", [](TiffKind& k) {
    k.compression = COMPRESSION_ADOBE_DEFLATE, k.rowsPerStrip = 0, k.mode = "wb";
  });
  if (kind.bits >= 8) {
    add("LZW, predictor, big-endian", [](TiffKind& k) {
      k.compression = COMPRESSION_LZW, k.predictor = PREDICTOR_HORIZONTAL, k.mode = "wb";
    });
  }
  if (kind.samples > 1) {
    add("planes", [](TiffKind& k) { k.separate = true; });
    add("planes of tiles", [](TiffKind& k) { k.separate = true, k.rowsPerStrip = 0; });
  }
}

std::vector<NamedKind> allKinds() {
  std::vector<NamedKind> kinds;
  const auto samples = [&](const char* name, std::uint16_t bits, std::uint16_t count,
                           std::uint16_t photometric, std::vector<std::uint16_t> extras = {}) {
    TiffKind kind;
    kind.bits = bits, kind.samples = count, kind.photometric = photometric;
    kind.extras = std::move(extras);
    addStorages(kinds, name + std::string(" ") + std::to_string(bits), kind);
  };
  for (const std::uint16_t bits : std::initializer_list<std::uint16_t>{1, 2, 4, 8, 16}) {
    samples("gray", bits, 1, PHOTOMETRIC_MINISBLACK);
    samples("white gray", bits, 1, PHOTOMETRIC_MINISWHITE);
    if (bits <= 8) samples("palette", bits, 1, PHOTOMETRIC_PALETTE);
  }
  for (const std::uint16_t bits : std::initializer_list<std::uint16_t>{8, 16}) {
    samples("RGB", bits, 3, PHOTOMETRIC_RGB);
    samples("RGBA", bits, 4, PHOTOMETRIC_RGB, {EXTRASAMPLE_UNASSALPHA});
    samples("CMYK", bits, 4, PHOTOMETRIC_SEPARATED);
  }
  samples("RGBA and one more", 8, 5, PHOTOMETRIC_RGB, {EXTRASAMPLE_UNASSALPHA, 0});

  const auto coded = [&](const char* name, std::uint16_t compression, TiffKind kind) {
    kind.compression = compression;
    kinds.push_back({name, kind});
    kind.rowsPerStrip = compression == COMPRESSION_JPEG ? 16 : 64, kind.mode = "wb";
    kind.fillOrder = FILLORDER_LSB2MSB;
    kinds.push_back({std::string(name) + ", fill order 2, big-endian", kind});
    kind.rowsPerStrip = 0;
    kinds.push_back({std::string(name) + ", tiles", kind});
  };
  const TiffKind bilevel{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE};
  coded("RLE", COMPRESSION_CCITTRLE, bilevel);
  coded("G3 1D", COMPRESSION_CCITTFAX3, bilevel);
  TiffKind twoDimensional = bilevel;
  twoDimensional.g3Options = GROUP3OPT_2DENCODING;
  coded("G3 2D", COMPRESSION_CCITTFAX3, twoDimensional);
  coded("G4", COMPRESSION_CCITTFAX4, bilevel);
  const auto jpeg = [](std::uint16_t count, std::uint16_t photometric, std::uint16_t subsampling) {
    TiffKind kind;
    kind.samples = count, kind.photometric = photometric, kind.subsampling = subsampling;
    kind.rowsPerStrip = 48;
    return kind;
  };
  coded("JPEG gray", COMPRESSION_JPEG, jpeg(1, PHOTOMETRIC_MINISBLACK, 1));
  coded("JPEG RGB", COMPRESSION_JPEG, jpeg(3, PHOTOMETRIC_RGB, 1));
  coded("JPEG YCbCr", COMPRESSION_JPEG, jpeg(3, PHOTOMETRIC_YCBCR, 2));
  coded("JPEG CMYK", COMPRESSION_JPEG, jpeg(4, PHOTOMETRIC_SEPARATED, 1));
  kinds.push_back({"YCbCr 2 x 2",
                   {.samples = 3,
                    .photometric = PHOTOMETRIC_YCBCR,
                    .compression = COMPRESSION_LZW,
                    .rowsPerStrip = 12,
                    .subsampling = 2}});
  return kinds;
}

void expectAsJudged(const TempStation& station, const NamedKind& named) {
  SCOPED_TRACE(named.name);
  const TiffKind& kind = named.kind;
  writeTiff(station.native("page.tif"), kind);
  const TiffPage page(station.path(L"page.tif"), 1);
  const DecodedPage decoded = page.decode();
  EXPECT_EQ(decoded.damage, std::nullopt);
  EXPECT_EQ(page.info().width, decoded.raster.width);
  EXPECT_EQ(page.info().height, decoded.raster.height);
  EXPECT_EQ(page.info().bitsPerPixel, decoded.raster.bitsPerPixel());
  EXPECT_EQ(decoded.raster.bitsPerSample, kind.bits);
  EXPECT_EQ(decoded.raster.pixels.size(), decoded.raster.rowBytes() * decoded.raster.height);
  std::string judged = "page.tif";
  if (const std::string tool = toolBeforeJudge(kind); !tool.empty()) {
    judged = "judged.tif";
    outputOf(tool + " " + quoted(station.native("page.tif")) + " " +
             quoted(station.native(judged)));
  }
  std::string channels = kind.photometric == PHOTOMETRIC_SEPARATED ? "cmyk" : "rgb";
  if (!kind.extras.empty()) channels += "a";
  EXPECT_TRUE(pixelsOf(decoded.raster) == judgedPixels(station.native(judged), channels));
}

TEST(Decoding, EveryKindGivesThePixelsThatAnOutsideToolSees) {
  const TempStation station;
  for (const NamedKind& named : allKinds()) expectAsJudged(station, named);
}

TEST(Decoding, EveryOrientationComesOutUprightAtEveryDepth) {
  const TempStation station;
  const std::pair<std::uint16_t, std::uint16_t> forms[] = {{1, 1}, {4, 1}, {8, 1},  {16, 1},
                                                           {8, 3}, {8, 4}, {16, 3}, {16, 4}};
  for (std::uint16_t orientation = 2; orientation <= 8; ++orientation) {
    for (const auto& [bits, samples] : forms) {
      TiffKind kind{.bits = bits, .samples = samples, .orientation = orientation};
      if (samples >= 3) kind.photometric = PHOTOMETRIC_RGB;
      if (samples == 4) kind.extras = {EXTRASAMPLE_UNASSALPHA};
      expectAsJudged(station, {"orientation " + std::to_string(orientation) + ", " +
                                   std::to_string(samples) + " x " + std::to_string(bits),
                               kind});
    }
  }
}

// libjpeg's own tool reads the stream that the old-style page points at.
TEST(Decoding, OldStyleJpegShowsItsStream) {
  const TempStation station;
  const std::string jpeg = outputOf(
      "convert -size 64x48 gradient:red-blue -rotate 30 -crop 64x48+0+0 +repage "
      "-sampling-factor 1x1 -quality 90 jpg:-");
  std::vector<RawEntry> entries = {{256, 4, 1, 64}, {257, 4, 1, 48}, {258, 3, 1, 8},
                                   {259, 3, 1, 6},  {262, 3, 1, 6},  {273, 4, 1, 0},
                                   {277, 3, 1, 3},  {278, 4, 1, 48}, {279, 4, 1, 0},
                                   {513, 4, 1, 0},  {514, 4, 1, 0},  {530, 3, 2, 0x10001}};
  const auto size = static_cast<std::uint32_t>(jpeg.size());
  entries[5].value = entries[9].value = rawDataOffset(entries);
  entries[8].value = entries[10].value = size;
  writeBytes(station.native("old.tif"), rawTiff(entries, 0, jpeg));
  writeBytes(station.native("old.jpg"), jpeg);
  const DecodedPage decoded = TiffPage(station.path(L"old.tif"), 1).decode();
  EXPECT_EQ(decoded.damage, std::nullopt);
  EXPECT_LE(
      largestDifference(pixelsOf(decoded.raster), judgedPixels(station.native("old.jpg"), "rgb")),
      3 * 257);
}

TEST(Decoding, PagesAreFoundByNumber) {
  const TempStation station;
  for (const char* mode : {"wl", "wb8"}) {
    writeTiff(station.native("pages.tif"), {.mode = mode}, 5);
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
  const float nan = std::numeric_limits<float>::quiet_NaN();
  struct Case {
    float x, y;
    int unit;  // 0: no tag
    std::uint16_t orientation;
    double dpiX, dpiY;
  } cases[] = {
      {300, 150, RESUNIT_INCH, 1, 300, 150},
      {300, 150, RESUNIT_INCH, 6, 150, 300},
      {100, 200, RESUNIT_CENTIMETER, 1, 254, 508},
      {300, 300, RESUNIT_NONE, 1, 200, 200},
      {400, 300, 0, 1, 400, 300},
      {0, 0, RESUNIT_INCH, 1, 200, 200},
      {1e9F, 1, RESUNIT_INCH, 1, 200, 200},
      {600, 0, RESUNIT_INCH, 1, 600, 600},
      {nan, nan, RESUNIT_INCH, 1, 200, 200},
  };
  for (const Case& c : cases) {
    writeTiff(station.native("page.tif"), {.orientation = c.orientation});
    const std::string file = quoted(station.native("page.tif"));
    if (c.unit != 0) outputOf("tiffset -s 296 " + std::to_string(c.unit) + " " + file);
    for (const auto& [tag, value] : {std::pair("282", c.x), std::pair("283", c.y)}) {
      if (value == value)
        outputOf("tiffset -s " + (tag + (" " + std::to_string(value))) + " " + file);
    }
    const Resolution resolution = TiffPage(station.path(L"page.tif"), 1).info().resolution;
    EXPECT_NEAR(resolution.x, c.dpiX, 1e-4) << c.x << " " << c.y << " " << c.unit;
    EXPECT_NEAR(resolution.y, c.dpiY, 1e-4) << c.x << " " << c.y << " " << c.unit;
  }
}

}  // namespace
}  // namespace orvane::test
