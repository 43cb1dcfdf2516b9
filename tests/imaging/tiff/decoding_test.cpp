#include <gtest/gtest.h>

#include "imaging/differing_pixels.h"
#include "imaging/libtiff_judge.h"
#include "imaging/lzw/lossless.h"
#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/failure_of.h"

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
    const Examined<Raster> decoded = page.decode();
    EXPECT_EQ(decoded.data.damage, std::nullopt);
    EXPECT_EQ(page.info().width, decoded.value.width);
    EXPECT_EQ(page.info().height, decoded.value.height);
    EXPECT_EQ(page.info().bitsPerPixel, decoded.value.bitsPerPixel());
    return decoded.value;
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
    if (bits < 4) continue;
    kinds.push_back({.bits = bits, .samples = 3, .photometric = PHOTOMETRIC_RGB});
    kinds.push_back({.bits = bits, .samples = 5, .photometric = PHOTOMETRIC_RGB, .extras = {2, 0}});
    if (bits < 8) continue;
    kinds.push_back({.bits = bits, .samples = 4, .photometric = PHOTOMETRIC_SEPARATED});
    kinds.push_back({.bits = bits, .samples = 4, .photometric = PHOTOMETRIC_RGB, .extras = kAlpha});
  }
  return kinds;
}

// One storage is judged from outside; all the others must show the same. Every page comes out
// upright.
TEST_F(Decoding, SamplesOfEveryDepthInEveryStorageAreExact) {
  std::vector<std::string> storages = {"-B -r 11",        "-c packbits -f lsb2msb",
                                       "-c lzw -8 -r 11", "-c zip -t -w 32 -l 16 -B",
                                       "-c zstd -r 11",   "-c lzma"};
  for (const TiffKind& kind : allKinds()) {
    SCOPED_TRACE(testing::Message()
                 << kind.samples << " x " << kind.bits << ", photometric " << kind.photometric);
    writeTiff(station.native("base.tif"), kind);
    const Raster base = decoded(page("cp base.tif page.tif"));
    const Bytes& expected = base.pixels;
    if (kind.bits == 4 && kind.samples == 5) {
      // ImageMagick takes such a page for one of four samples. Its plain rows hold the samples as
      // they are.
      const std::string file = readBytes(station.native("base.tif"));
      const Bytes stored(file.begin() + 8, file.end());
      const std::size_t rowBytes = (kind.width * 20 + 7) / 8, shown = kind.width * 3;
      for (std::size_t i = 0; i < shown * kind.height; ++i) {
        const std::size_t y = i / shown, x = i % shown;
        ASSERT_EQ(shallowSample(expected.data() + y * base.rowBytes(), x, 4),
                  shallowSample(stored.data() + y * rowBytes, x / 3 * 5 + x % 3, 4));
      }
    } else {
      expectShows(page("cp base.tif page.tif"), "base.tif");
    }
    if (kind.bits >= 8) {
      storages = {"-c lzw:2 -B -r 11", "-c zip:2 -t -w 32 -l 16 -L", "-c none", "-c zstd:2 -B",
                  "-c lzma:2 -t -w 32 -l 16"};
    }
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

TEST_F(Decoding, FaxJpegAndWebpPagesShowWhatAnOutsideToolSees) {
  const TiffKind fax{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE};
  const TiffKind rgb{.samples = 3, .photometric = PHOTOMETRIC_RGB};  // becomes YCbCr
  const TiffKind cmyk{.samples = 4, .photometric = PHOTOMETRIC_SEPARATED};
  const TiffKind rgba{.samples = 4, .photometric = PHOTOMETRIC_RGB, .extras = kAlpha};
  const std::vector<std::string> faxes = {"-c g3:1d -f lsb2msb -r 11", "-c g3:2d -B", "-c g4 -r 11",
                                          "-c g4 -f lsb2msb", "-c g4 -t -w 32 -l 16"};
  const std::vector<std::string> jpegs = {"-c jpeg -r 16", "-c jpeg:r:90 -B -r 16",
                                          "-c jpeg -t -w 32 -l 16"};
  const std::vector<std::string> webps = {"-c webp -r 11", "-c webp -t -w 32 -l 16"};
  for (const auto& [kind, storages] : {std::pair{fax, faxes},
                                       {TiffKind{}, jpegs},
                                       {rgb, jpegs},
                                       {cmyk, jpegs},
                                       {rgb, webps},
                                       {rgba, webps}}) {
    writeTiff(station.native("base.tif"), kind);
    for (const std::string& storage : storages) {
      SCOPED_TRACE(storage);
      expectShows(
          page("tiffcp " + storage + " base.tif page.tif && tiffcp -s -c none page.tif judged.tif"),
          "judged.tif");
    }
  }
  for (const std::uint16_t compression : Values{COMPRESSION_CCITTRLE, COMPRESSION_JBIG}) {
    TiffKind kind = fax;
    kind.compression = compression;
    writeTiff(station.native("base.tif"), kind);
    expectShows(page("tiffcp -c none base.tif judged.tif && cp base.tif page.tif"), "judged.tif");
  }
  // The JBIG page once more with its bits in the other order; then with another width in its head.
  std::string file = readBytes(station.native("base.tif"));
  TIFFReverseBits(reinterpret_cast<std::uint8_t*>(&file[8]), directoryOf(file) - 8);
  writeBytes(station.native("page.tif"), file);
  expectShows(page("tiffset -s 266 2 page.tif"), "judged.tif");
  EXPECT_THROW(page("printf '\\377' | dd of=page.tif bs=1 seek=12 conv=notrunc"), Failure);
}

// What libtiff turns into gray or RGB as it decodes, as its own tool does. Signed samples pass as
// the bits that they are.
TEST_F(Decoding, LogarithmicAndSignedPagesShowWhatLibtiffMakesOfThem) {
  std::vector<TiffKind> kinds = {{16, 3, PHOTOMETRIC_LOGLUV, COMPRESSION_SGILOG},
                                 {16, 3, PHOTOMETRIC_LOGLUV, COMPRESSION_SGILOG24},
                                 {16, 1, PHOTOMETRIC_LOGL, COMPRESSION_SGILOG},
                                 {8, 3, PHOTOMETRIC_RGB, COMPRESSION_PIXARLOG},
                                 {8, 3, PHOTOMETRIC_RGB, COMPRESSION_LERC},
                                 {8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_LZW}};
  for (std::size_t i = 4; i < kinds.size(); ++i) kinds[i].sampleFormat = SAMPLEFORMAT_INT;
  for (const TiffKind& kind : kinds) {
    for (const std::string storage : {"-s", "-t -w 32 -l 16"}) {
      SCOPED_TRACE(testing::Message() << kind.photometric << " in " << kind.compression << storage);
      if (kind.compression == COMPRESSION_PIXARLOG && storage != "-s") continue;  // knows no tiles
      writeTiff(station.native("base.tif"), kind);
      expectShows(page("tiffcp " + storage +
                       " base.tif page.tif && "
                       "tiff2rgba -n -c none page.tif judged.tif"),
                  "judged.tif");
    }
  }
}

// Every gray, and colours near to gray. ICCLab gives a and b an offset where CIELab gives them a
// sign; 16-bit L ends at 0xFF00. tificc knows CIELab alone.
TEST_F(Decoding, LabShowsTheColoursOfColourManagement) {
  std::string cie8, cie16, icc8, icc16;
  for (unsigned i = 0; i < 256 * 16; ++i) {
    const unsigned a = i < 256 ? 0 : i / 256 * 3 - 22, b = i < 256 ? 0 : i % 41 - 20;
    for (const unsigned code : {i % 256, a % 256, b % 256}) {
      const bool isL = cie8.size() % 3 == 0;
      const auto icc = static_cast<char>(isL ? code : code ^ 0x80);
      cie8 += static_cast<char>(code);
      (cie16 += isL ? cie8.back() : '\0') += cie8.back();
      icc8 += icc;
      (icc16 += '\0') += icc;
    }
  }
  const auto lab = [&](const std::string& name, const std::string& samples, unsigned bits,
                       unsigned photometric) {
    writeBytes(station.native(name),
               rawGrayPage(256, 16, samples,
                           {{258, 3, 1, bits}, {262, 3, 1, photometric}, {277, 3, 1, 3}}));
  };
  lab("cie8.tif", cie8, 8, PHOTOMETRIC_CIELAB);
  lab("cie16.tif", cie16, 16, PHOTOMETRIC_CIELAB);
  lab("icc8.tif", icc8, 8, PHOTOMETRIC_ICCLAB);
  lab("icc16.tif", icc16, 16, PHOTOMETRIC_ICCLAB);
  const Bytes shown = decoded(page("cp cie8.tif page.tif")).pixels;
  outputOf("cd " + quoted(station.native()) +
           " && tificc '-i*Lab' '-o*sRGB' cie8.tif managed.tif 2>&1 && "
           "convert managed.tif rgb:managed");
  const std::string managed = readBytes(station.native("managed"));
  ASSERT_EQ(managed.size(), shown.size());
  unsigned sum = 0;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const int difference = std::abs(shown[i] - static_cast<std::uint8_t>(managed[i]));
    EXPECT_TRUE(i >= 256 * 3 || difference <= 2) << "gray " << i / 3;
    sum += difference;
  }
  EXPECT_LT(sum, shown.size());
  for (const char* other :
       {"cp cie16.tif page.tif", "cp icc8.tif page.tif", "tiffcp -c lzw -B -r 5 icc16.tif page.tif",
        "tiffcp -t -w 32 -l 32 icc16.tif page.tif", "tiffcp -c zip:2 cie16.tif page.tif"}) {
    EXPECT_TRUE(decoded(page(other)).pixels == shown) << other;
  }
  // Gray stays gray under a white that the page states.
  const Bytes underD65 =
      decoded(page("cp cie8.tif page.tif && tiffset -s 318 0.3127 0.3290 page.tif")).pixels;
  EXPECT_TRUE(std::equal(shown.begin(), shown.begin() + 256 * 3, underD65.begin()));
  EXPECT_FALSE(underD65 == shown);
}

// Rows of 8 pixels with every code of the two compressions, which nobody writes any more.
TEST_F(Decoding, NextAndThunderScanPagesShowWhatLibtiffsToolSees) {
  const std::pair<std::string, std::vector<RawEntry>> cases[] = {
      {std::string("\0\x1B\xE4"
                   "\x40\0\1\0\1\x1B"
                   "\x44\x84",
                   11),
       {{258, 3, 1, 2}, {259, 3, 1, COMPRESSION_NEXT}}},
      {"\xC5\x03\x8A\x5E"
       "\xCF\x07"
       "\xC1\xC9\xC3\xC4\xC5\xC0\xC7\xC2",
       {{258, 3, 1, 4}, {259, 3, 1, COMPRESSION_THUNDERSCAN}}}};
  for (const auto& [strip, entries] : cases) {
    writeBytes(station.native("page.tif"), rawGrayPage(8, 3, strip, entries));
    expectShows(page("tiffcp -c none page.tif judged.tif"), "judged.tif");
  }
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
    std::string strips;  // libtiff writes them in sequence after the header
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
