#include <gtest/gtest.h>

#include "imaging/codecs/libtiff_judge.h"
#include "imaging/codecs/lossless.h"
#include "imaging/differingPixels.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using Values = std::initializer_list<std::uint16_t>;

struct Decoding : testing::Test {
  TempStation station;

  // Commands that make page.tif, of base.tif as a rule.
  TiffPage page(const std::string& commands, std::int32_t number = 1) const {
    outputOf("cd " + quoted(station.native()) + " && " + commands);
    return {station.path(L"page.tif"), number};
  }

  Raster decoded(const TiffPage& page) const {
    const DecodedPage decoded = page.decode();
    EXPECT_EQ(decoded.damage, std::nullopt);
    EXPECT_EQ(page.info().width, decoded.raster.width);
    EXPECT_EQ(page.info().height, decoded.raster.height);
    EXPECT_EQ(page.info().bitsPerPixel, decoded.raster.bitsPerPixel());
    return decoded.raster;
  }

  // Compares a page, written without loss in two ways, with a file that shows the same.
  void expectShows(const TiffPage& page, const std::string& file) const {
    const Raster pixels = decoded(page);
    for (const EncodedImage& image : {encodeUncompressed(pixels, SampleOrder::LittleEndian),
                                      encodeLzw(pixels, SampleOrder::BigEndian)}) {
      writeTiff(station.native("ours.tif"), image, image.compression == Compression::Lzw);
      EXPECT_EQ(differingPixels(quoted(station.native(file)), quoted(station.native("ours.tif"))),
                "0");
    }
  }
};

const std::vector<std::uint16_t> kAlpha = {EXTRASAMPLE_UNASSALPHA};

std::vector<TiffKind> allKinds() {
  std::vector<TiffKind> kinds;
  for (const std::uint16_t bits : Values{1, 2, 4, 8, 16}) {
    kinds.push_back({.bits = bits});
    kinds.push_back({.bits = bits, .photometric = PHOTOMETRIC_MINISWHITE});
    if (bits < 16) kinds.push_back({.bits = bits, .photometric = PHOTOMETRIC_PALETTE});
    if (bits < 8) continue;
    kinds.push_back({.bits = bits, .samples = 3, .photometric = PHOTOMETRIC_RGB});
    kinds.push_back({.bits = bits, .samples = 4, .photometric = PHOTOMETRIC_SEPARATED});
    kinds.push_back({.bits = bits, .samples = 4, .photometric = PHOTOMETRIC_RGB, .extras = kAlpha});
    kinds.push_back({.bits = bits, .samples = 5, .photometric = PHOTOMETRIC_RGB, .extras = {2, 0}});
  }
  return kinds;
}

// One storage is judged from outside; all the others must show the same. Every page comes out
// upright.
TEST_F(Decoding, SamplesOfEveryDepthInEveryStorageAreExact) {
  std::vector<std::string> storages = {"-B -r 11", "-c packbits -f lsb2msb", "-c lzw -8 -r 11",
                                       "-c zip -t -w 32 -l 16 -B"};
  for (const TiffKind& kind : allKinds()) {
    SCOPED_TRACE(testing::Message()
                 << kind.samples << " x " << kind.bits << ", photometric " << kind.photometric);
    writeTiff(station.native("base.tif"), kind);
    expectShows(page("cp base.tif page.tif"), "base.tif");
    const Bytes expected = page("cp base.tif page.tif").decode().raster.pixels;
    if (kind.bits >= 8) storages = {"-c lzw:2 -B -r 11", "-c zip:2 -t -w 32 -l 16 -L", "-c none"};
    if (kind.samples > 1 && kind.bits == 8) {
      storages = {"-c lzw:2", "-p separate -c lzw:2", "-p separate -c zip -B -t -w 32 -l 16"};
    }
    for (const std::string& storage : storages) {
      EXPECT_TRUE(decoded(page("tiffcp " + storage + " base.tif page.tif")).pixels == expected)
          << storage;
    }
    const bool plainGray = kind.photometric == PHOTOMETRIC_MINISBLACK;
    if (!plainGray && (kind.photometric != PHOTOMETRIC_RGB || kind.samples == 5)) continue;
    for (const char* orientation : {"2", "3", "4", "5", "6", "7", "8"}) {
      expectShows(page("tiffset -s 274 " + std::string(orientation) + " page.tif"), "page.tif");
    }
    if (kind.bits < 16 || plainGray) continue;  // tiffcp makes no planes of 16 bits
    expectShows(
        page("convert base.tif -interlace plane page.tif && tiffinfo page.tif | grep 'separate'"),
        "base.tif");
  }
}

TEST_F(Decoding, FaxAndJpegPagesShowWhatAnOutsideToolSees) {
  const TiffKind fax{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE};
  const TiffKind rgb{.samples = 3, .photometric = PHOTOMETRIC_RGB};  // becomes YCbCr
  const TiffKind cmyk{.samples = 4, .photometric = PHOTOMETRIC_SEPARATED};
  const std::vector<std::string> faxes = {"-c g3:1d -f lsb2msb -r 11", "-c g3:2d -B", "-c g4 -r 11",
                                          "-c g4 -f lsb2msb", "-c g4 -t -w 32 -l 16"};
  const std::vector<std::string> jpegs = {"-c jpeg -r 16", "-c jpeg:r:90 -B -r 16",
                                          "-c jpeg -t -w 32 -l 16"};
  for (const auto& [kind, storages] :
       {std::pair{fax, faxes}, {TiffKind{}, jpegs}, {rgb, jpegs}, {cmyk, jpegs}}) {
    writeTiff(station.native("base.tif"), kind);
    for (const std::string& storage : storages) {
      SCOPED_TRACE(storage);
      expectShows(
          page("tiffcp " + storage + " base.tif page.tif && tiffcp -s -c none page.tif judged.tif"),
          "judged.tif");
    }
  }
  TiffKind modified = fax;
  modified.compression = COMPRESSION_CCITTRLE;
  writeTiff(station.native("base.tif"), modified);
  expectShows(page("cp base.tif page.tif"), "base.tif");
}

// libjpeg shows the stream that the old-style page points at.
TEST_F(Decoding, OldStyleJpegShowsItsStream) {
  const std::string jpeg = outputOf("convert -size 64x48 gradient:red-blue -quality 90 jpg:-");
  writeBytes(station.native("old.jpg"), jpeg);
  writeBytes(station.native("page.tif"), oldStyleJpegPage(64, 48, jpeg));
  expectShows(page("true"), "old.jpg");
}

TEST_F(Decoding, Group4StripsAreTheBytesOfTheFileInFillOrder1) {
  writeTiff(station.native("base.tif"), {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE});
  for (const std::string rows : {"45", "11"}) {
    const auto plain = page("tiffcp -c g4 -r " + rows + " base.tif page.tif").group4Strips();
    ASSERT_TRUE(plain.has_value());
    std::string strips;  // libtiff writes them in a row, behind the header
    for (const Bytes& strip : plain->strips) strips.append(strip.begin(), strip.end());
    EXPECT_EQ(readBytes(station.native("page.tif")).substr(8, strips.size()), strips);
    EXPECT_EQ(plain->strips.size(), 44 / plain->rowsPerStrip + 1);
    const auto turned = page("tiffcp -c g4 -f lsb2msb -r " + rows + " base.tif page.tif && " +
                             "tiffset -s 262 1 page.tif")
                            .group4Strips();
    ASSERT_TRUE(turned.has_value());
    EXPECT_EQ(turned->strips, plain->strips);
    EXPECT_EQ(turned->photometric, Photometric::MinIsBlack);
  }
  for (const char* other : {"-c g4 -t -w 32 -l 16 base.tif page.tif", "-c g3 base.tif page.tif"}) {
    EXPECT_FALSE(page(std::string("tiffcp ") + other).group4Strips().has_value()) << other;
  }
}

TEST_F(Decoding, PagesAreFoundByNumber) {
  writeTiff(station.native("base.tif"), {}, 5);
  for (const std::string format : {"-L", "-B -8"}) {
    for (const int number : {5, 1, 3}) {
      expectShows(page("tiffcp " + format + " base.tif page.tif", number),
                  "base.tif[" + std::to_string(number - 1) + "]");
    }
    EXPECT_EQ(tiffPageCount(station.path(L"page.tif")), 5);
  }
}

TEST_F(Decoding, ResolutionComesAsDotsPerInch) {
  const std::tuple<const char*, double, double> cases[] = {
      // XResolution, YResolution, ResolutionUnit, Orientation; "-" for none
      {"300 150 2 1", 300, 150}, {"300 150 2 6", 150, 300},      {"100 200 3 1", 254, 508},
      {"300 300 1 1", 200, 200}, {"400 300 - 1", 400, 300},      {"0 0 2 1", 200, 200},
      {"2 1 1 1", 200, 100},     {"98 204 1 6", 200, 98 / 1.02}, {"3 0 1 1", 200, 200},
      {"100 1 1 1", 200, 200},   {"1e9 1 2 1", 200, 200},        {"600 - 2 1", 600, 600},
      {"- - - 1", 200, 200},     {"- 150 2 8", 150, 150},        {"65000 300 3 1", 762, 762}};
  for (const auto& [tags, dpiX, dpiY] : cases) {
    writeTiff(station.native("page.tif"), TiffKind{});
    const auto [x, y, isStated] =
        page("set -- " + std::string(tags) + "; for tag in 282 283 296 274; do " +
             "[ $1 = - ] || tiffset -s $tag $1 page.tif; shift; done")
            .info()
            .resolution;
    EXPECT_NEAR(x, dpiX, 1e-4) << tags;
    EXPECT_NEAR(y, dpiY, 1e-4) << tags;
    EXPECT_EQ(isStated, dpiX != 200 || dpiY != 200) << tags;
  }
}

}  // namespace
}  // namespace orvane::test
