#include "imaging/jpeg/jpeg.h"

#include <cmath>
#include <gmock/gmock.h>

#include "imaging/jpeg/jpeg_transcode.h"
#include "imaging/pages.h"
#include "imaging/tiff/TiffFile.h"
#include "imaging/tiff/TiffPage.h"
#include "support/TempStation.h"
#include "support/command.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using ::testing::HasSubstr;
using namespace std::string_literals;

const RasterForm kGray = form(ColourModel::MinIsBlack, 8), kRgb = form(ColourModel::Rgb, 8, 3);

std::string text(const Bytes& stream) {
  return {stream.begin(), stream.end()};
}

std::string encoded(const Raster& page, JpegFactors factors, const Resolution& resolution) {
  const EncodedImage image = encodeJpeg(page, factors, resolution);
  EXPECT_EQ(image.strips.size(), 1u);
  return text(image.strips[0]);
}

// cjpeg writes the same stream, but for the density in bytes 13 to 17: it has no option for it.
TEST(Jpeg, EncodesTheStreamOfTheReferenceEncoder) {
  const std::tuple<RasterForm, std::uint32_t, std::uint32_t, JpegFactors, std::string> cases[] = {
      {kGray, 1, 1, {}, "80,84"},         {kGray, 83, 40, {40, 32}, "60,68"},
      {kRgb, 1, 1, {60, 48}, "40,52"},    {kRgb, 16, 16, {}, "80,84"},
      {kRgb, 301, 77, {40, 32}, "60,68"}, {kRgb, 500, 1, {-5, 150}, "100,1"},
      {kRgb, 17, 200, {99, 0}, "1,100"}};
  const TempStation station;
  for (const auto& [form, width, height, factors, quality] : cases) {
    Random random(width);
    const Raster page = scannedPage(random, form, width, height);
    writePnm(station.native("page.pnm"), page);
    std::string expected = outputOf("cjpeg -baseline -dct int -quality " + quality + " " +
                                    quoted(station.native("page.pnm")));
    expected.replace(13, 5, std::string("\x01\x01\x2C\x01\x2C", 5));
    EXPECT_TRUE(encoded(page, factors, {300, 300}) == expected) << quality;
  }
}

TEST(Jpeg, StatesTheDensityThatItCan) {
  const std::pair<Resolution, std::string> cases[] = {{{299.6, 150.4}, "density 300x150  1"},
                                                      {{0.2, 1e9}, "density 1x65535  1"},
                                                      {{-3, 0.0 / 0.0}, "density 1x1  1"}};
  const TempStation station;
  for (const auto& [resolution, density] : cases) {
    writeBytes(station.native("page.jpg"), encoded(emptyRaster(kRgb, 20, 20), {}, resolution));
    EXPECT_THAT(outputOf("djpeg -verbose -outfile /dev/null " + quoted(station.native("page.jpg"))),
                HasSubstr(density));
  }
}

TEST(Jpeg, RefusesWhatAStreamCannotHold) {
  for (const RasterForm& other :
       {form(ColourModel::Rgb, 16, 3), form(ColourModel::Palette, 8), form(ColourModel::Cmyk, 8, 4),
        form(ColourModel::MinIsWhite, 8), form(ColourModel::Rgb, 8, 4, ExtraSample::Unspecified)}) {
    EXPECT_THROW(encodeJpeg(emptyRaster(other, 8, 8), {}, {}), Failure);
  }
  for (const auto& [width, height, fits] :
       {std::tuple{65501u, 1u, false}, {1u, 65501u, false}, {65500u, 1u, true}}) {
    const std::string failure =
        failureOf([&, w = width, h = height] { encodeJpeg(emptyRaster(kGray, w, h), {}, {}); });
    EXPECT_EQ(failure.find("65500") == failure.npos, fits) << failure;
  }
}

constexpr std::uint32_t kOneStrip = 10000;

struct Source {
  std::uint16_t samples;
  std::uint32_t width, height, rowsPerStrip;
  std::string options;  ///< of cjpeg
};

const Source kSources[] = {{1, 200, 120, kOneStrip, ""},
                           {3, 301, 203, kOneStrip, ""},
                           {3, 301, 203, kOneStrip, "-sample 2x1"},
                           {3, 301, 203, kOneStrip, "-sample 1x1 -optimize"},
                           {3, 301, 203, kOneStrip, "-restart 7B"},
                           {1, 83, 45, kOneStrip, "-restart 1 -optimize"},
                           {3, 150, 203, 16, ""},
                           {3, 150, 331, 32, "-optimize"},
                           {3, 150, 203, 48, "-restart 2B"},
                           {1, 150, 203, 8, "-sample 2x2"},
                           {3, 8, 8, kOneStrip, ""}};

Raster scan(const Source& source) {
  const RasterForm gray = form(ColourModel::MinIsBlack, 8), rgb = form(ColourModel::Rgb, 8, 3);
  Random random(source.width * 7 + source.samples);
  return scannedPage(random, source.samples == 3 ? rgb : gray, source.width, source.height);
}

StoredJpeg stored(const EncodedImage& image) {
  return {.width = image.width,
          .height = image.height,
          .rowsPerStrip = image.rowsPerStrip,
          .samplesPerPixel = image.samplesPerPixel,
          .photometric = image.photometric,
          .resolution = image.resolution,
          .isUprightInStrips = true,
          .tables = {},
          .streamCount = static_cast<std::uint32_t>(image.strips.size()),
          .stream = [&image](std::uint32_t index) -> ByteView { return image.strips[index]; }};
}

std::optional<EncodedImage> transcoded(const EncodedImage& image, JpegFactors factors) {
  return transcodeJpeg(stored(image), factors);
}

struct JpegTranscode : testing::Test {
  TempStation station;

  // One stream of cjpeg for every `rowsPerStrip` rows.
  EncodedImage encodedByCjpeg(const Raster& page, std::uint32_t rowsPerStrip,
                              const std::string& options) const {
    EncodedImage image = encodeJpeg(page, {}, {300, 300});
    image.rowsPerStrip = rowsPerStrip;
    image.strips.clear();
    for (std::uint32_t y = 0; y < page.height; y += rowsPerStrip) {
      Raster part = emptyRaster(page, page.width, std::min(rowsPerStrip, page.height - y));
      part.pixels.assign(page.row(y), page.row(y) + part.pixels.size());
      writePnm(station.native("page.pnm"), part);
      const std::string stream =
          outputOf("cjpeg " + options + " " + quoted(station.native("page.pnm")));
      image.strips.emplace_back(stream.begin(), stream.end());
    }
    return image;
  }

  EncodedImage encodedByCjpeg(const Source& source, const std::string& options = {}) const {
    return encodedByCjpeg(scan(source), source.rowsPerStrip, options + " " + source.options);
  }

  // What djpeg says of a stream: nothing, unless something is wrong.
  CommandResult djpeg(const Bytes& stream) const {
    writeBytes(station.native("page.jpg"), text(stream));
    return runCommand("cd " + quoted(station.native()) +
                      " && djpeg -nosmooth -outfile page.pnm page.jpg");
  }

  std::string pixelsOf(const EncodedImage& image) const {
    std::string pixels;
    for (const Bytes& strip : image.strips) {
      EXPECT_EQ(djpeg(strip).output, "");
      const std::string pnm = readBytes(station.native("page.pnm"));
      pixels += pnm.substr(pnm.find("\n255\n") + 5);
    }
    return pixels;
  }
};

double squaredError(const std::string& pixels, const Raster& page) {
  double sum = pixels.size() == page.pixels.size() ? 0 : INFINITY;
  for (std::size_t i = 0; i < page.pixels.size(); ++i) {
    sum += std::pow(static_cast<std::uint8_t>(pixels[i]) - page.pixels[i], 2);
  }
  return sum;
}

// The steps of the first quantisation table of a stream, in zigzag order.
std::string firstTableOf(const EncodedImage& image) {
  const std::string stream = text(image.strips[0]);
  return stream.substr(stream.find("\xFF\xDB") + 5, 64);
}

// True when `stream` holds the entropy-coded data of a strip, which follows at most 14 bytes of
// scan header, as it is.
bool holdsScanOf(const Bytes& stream, const Bytes& strip) {
  const Bytes start{0xFF, 0xDA};
  const auto scan = std::search(strip.begin(), strip.end(), start.begin(), start.end());
  return std::search(stream.begin(), stream.end(), scan + 14, strip.end() - 2) != stream.end();
}

// What tiffinfo says of the colours of a page with such a stream.
std::string coloursOf(const Source& source) {
  if (source.samples == 1) return "Photometric Interpretation: min-is-black\n";
  const std::size_t at = source.options.find("-sample ");
  const std::string factors = at == std::string::npos ? "2x2" : source.options.substr(at + 8, 3);
  return std::string("YCbCr Subsampling: ") + factors[0] + ", " + factors[2] + "\n";
}

// Tables that are coarser already: all coefficients stay, and with them every pixel. So they do in
// a TIFF file, and once more when its page is copied.
TEST_F(JpegTranscode, CopiesAPageThatIsCoarseEnough) {
  for (const Source& source : kSources) {
    SCOPED_TRACE(source.options);
    const EncodedImage image = encodedByCjpeg(source, "-quality 60");
    const auto copy = transcoded(image, {20, 16});
    ASSERT_TRUE(copy);
    ASSERT_EQ(copy->strips.size(), 1u);
    EXPECT_EQ(copy->rowsPerStrip, source.height);
    EXPECT_TRUE(pixelsOf(*copy) == pixelsOf(image));
    if (source.options.empty()) {
      for (const Bytes& strip : image.strips) EXPECT_TRUE(holdsScanOf(copy->strips[0], strip));
    }
    const Bytes density(copy->strips[0].begin() + 13, copy->strips[0].begin() + 18);
    EXPECT_EQ(density, (Bytes{1, 1, 0x2C, 1, 0x2C}));

    std::filesystem::remove(station.native("page.tif"));
    TiffFile().append(station.path(L"page.tif"), [&](SampleOrder) { return *copy; });
    EXPECT_THAT(station.shell("tiffinfo -d page.tif 2>&1"), HasSubstr(coloursOf(source)));
    EXPECT_EQ(station.shell("tiffinfo -d page.tif 2>&1 >/dev/null"), "");
    const TiffPage page(station.path(L"page.tif"), 1);
    const auto again = transcodeJpeg(*page.storedJpeg(), {20, 16});
    ASSERT_TRUE(again);
    EXPECT_EQ(again->strips, copy->strips);
    EXPECT_EQ(again->photometric, image.photometric);
  }
}

TEST_F(JpegTranscode, LosesLessThanDecodingAndEncodingAndTakesHardlyMore) {
  const std::pair<std::string, JpegFactors> qualities[] = {
      {"-quality 80,40", {40, 32}}, {"-quality 90", {20, 16}}, {"-quality 98", {40, 32}}};
  for (const Source& source : kSources) {
    const Raster page = scan(source);
    for (const auto& [quality, factors] : qualities) {
      SCOPED_TRACE(source.options + " from " + quality);
      const EncodedImage image = encodedByCjpeg(source, quality);
      const auto result = transcoded(image, factors);
      ASSERT_TRUE(result);
      Raster decoded = page;
      const std::string pixels = pixelsOf(image);
      decoded.pixels.assign(pixels.begin(), pixels.end());
      const EncodedImage detour = encodeJpeg(decoded, factors, {});
      if (quality == "-quality 98") {
        EXPECT_EQ(firstTableOf(*result), firstTableOf(detour));
      }
      if (page.width < 150) continue;  // too little to tell by
      EXPECT_LE(squaredError(pixelsOf(*result), page), squaredError(pixelsOf(detour), page));
      EXPECT_LT(result->strips[0].size(), detour.strips[0].size() * 5 / 4);
    }
  }
}

// A block of one gray has only a DC coefficient. The encoder rounds it in the same way, and fills
// the last byte in the same way.
TEST_F(JpegTranscode, WritesBlocksOfOneGrayAsTheEncoderDoes) {
  Raster page = emptyRaster(kGray, 8 * 256, 8);
  for (std::size_t i = 0; i < page.pixels.size(); ++i) {
    page.pixels[i] = static_cast<std::uint8_t>(i % page.width / 8);
  }
  const EncodedImage finest = encodeJpeg(page, {0, 0}, {300, 300});
  for (const JpegFactors& factors : {JpegFactors{20, 16}, {40, 32}, {50, 50}, {99, 99}}) {
    EXPECT_EQ(transcoded(finest, factors)->strips, encodeJpeg(page, factors, {300, 300}).strips);
  }
}

// The first strip is gray, the second has stripes of the same mean.
TEST_F(JpegTranscode, JoinsStripsOfWhichOnlyTheAcTablesDiffer) {
  Raster page = emptyRaster(kGray, 64, 16);
  for (std::size_t i = 0; i < page.pixels.size(); ++i) {
    page.pixels[i] = static_cast<std::uint8_t>(i < page.pixels.size() / 2 ? 128 : 108 + i % 2 * 40);
  }
  const EncodedImage image = encodedByCjpeg(page, 8, "-quality 60 -optimize");
  EXPECT_TRUE(pixelsOf(*transcoded(image, {20, 16})) == pixelsOf(image));
}

// The largest values of 8-bit samples (T.81 tables F.1 and F.2), and one more. An AC value of 11
// bits needs a table with a code for it.
TEST_F(JpegTranscode, TakesValuesUpToTheBoundsOfABaselineStream) {
  const std::string longCode = "1111111110000011", end = "1010";
  const struct {
    std::string bits;
    const char* acSymbol;
    bool isPossible;
  } cases[] = {{"11111110"
                "1111111111",
                "\x0A", true},  // DC 1023
               {"111111110"
                "10000000000",
                "\x0A", false},  // DC 1024
               {"111111110"
                "01111111111",
                "\x0A", true},  // DC -1024
               {"111111110"
                "01111111110",
                "\x0A", false},                                    // DC -1025
               {"00" + longCode + "1111111111", "\x0A", true},     // AC 1023
               {"00" + longCode + "10000000000", "\x0B", false}};  // AC 1024
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bits);
    EncodedImage image = encodeJpeg(emptyRaster(kGray, 8, 8), {}, {});
    std::string stream = text(image.strips[0]);
    stream.replace(stream.find("\x82\x09\x0A\x16") + 2, 1, c.acSymbol);
    stream.resize(stream.find("\xFF\xDA") + 10);
    std::string bits = c.bits + end;
    bits.resize((bits.size() + 7) / 8 * 8, '1');
    for (std::size_t i = 0; i < bits.size(); i += 8) {
      const auto byte = static_cast<char>(std::stoi(bits.substr(i, 8), nullptr, 2));
      stream += byte == '\xFF' ? std::string("\xFF\0", 2) : std::string(1, byte);
    }
    stream += "\xFF\xD9";
    image.strips[0].assign(stream.begin(), stream.end());
    EXPECT_EQ(djpeg(image.strips[0]).output, "");
    EXPECT_EQ(failureOf([&] { transcoded(image, {40, 32}); }).empty(), c.isPossible);
  }
}

TEST_F(JpegTranscode, LeavesOtherKindsOfStreamsToTheirPixels) {
  const Source source{3, 64, 48, 16, ""};
  EXPECT_TRUE(transcoded(encodedByCjpeg(source), {}));
  for (const char* options : {"-progressive", "-arithmetic", "-rgb", "-sample 4x1", "-sample 1x2",
                              "-sample 2x2,2x1,1x1"}) {
    EXPECT_FALSE(transcoded(encodedByCjpeg({3, 64, 48, kOneStrip, options}), {})) << options;
  }
  EXPECT_FALSE(transcoded(encodedByCjpeg({3, 64, 48, 24, ""}), {}));  // ends within an MCU
  void (*const changes[])(EncodedImage&){
      [](EncodedImage& image) { image.photometric = Photometric::Rgb; },
      [](EncodedImage& image) { image.width = 63; },
      [](EncodedImage& image) { image.height = 47; },
      [](EncodedImage& image) { image.rowsPerStrip = 0; },
      [](EncodedImage& image) { image.strips.pop_back(); },
      [](EncodedImage& image) {  // there are four quantisation tables, 0 to 3
        Bytes table(2 + 67, 1);
        std::ranges::copy(Bytes{0xFF, 0xDB, 0, 67, 4}, table.begin());
        image.strips[0].insert(image.strips[0].begin() + 2, table.begin(), table.end());
      }};
  for (const auto& change : changes) {
    EncodedImage image = encodedByCjpeg(source);
    change(image);
    EXPECT_FALSE(transcoded(image, {}));
  }
}

// The first is a Huffman table with a code of all ones.
TEST_F(JpegTranscode, RefusesWhatNoStreamMayHold) {
  const EncodedImage whole = encodedByCjpeg({1, 83, 45, kOneStrip, ""});
  EncodedImage filled = whole;  // before a marker there may be any number of fill bytes
  filled.strips[0].insert(filled.strips[0].begin() + 2, 127, 0xFF);
  EXPECT_EQ(transcoded(filled, {}).value().strips, transcoded(whole, {}).value().strips);
  for (const auto& [from, to] :
       {std::pair{"\1\5\1\1\1\1\1\1"s, "\1\5\1\1\1\1\2\0"s},
        {"\xFF\xD9"s, "\x55\xFF\xD9"s},                          // a byte too many
        {"\0\x3F\0"s, "\0\x3E\0"s},                              // not all coefficients
        {"\0\x08\1\1\0\0\x3F\0"s, "\0\x09\1\1\0\0\x3F\0\x55"s},  // a longer scan header
        {"\0\x0B\x08\0\x2D\0\x53\1\1\x11\0"s,
         "\0\x0C\x08\0\x2D\0\x53\1\1\x11\0\x55"s},     // a frame header
        {"\xFF\xC0"s, "\xFF\xDD\0\5\0\0\0\xFF\xC0"s},  // a restart interval
        {"\0\x2D\0\x53"s, "\0\x35\0\x53"s}}) {         // eight rows more
    std::string stream = text(whole.strips[0]);
    ASSERT_NE(stream.rfind(from), stream.npos);
    stream.replace(stream.rfind(from), from.size(), to);
    EncodedImage image = whole;
    image.height += to == "\0\x35\0\x53"s ? 8 : 0;
    image.strips[0].assign(stream.begin(), stream.end());
    EXPECT_THROW(transcoded(image, {}), Failure) << to;
  }
}

TEST_F(JpegTranscode, NoticesAllDamageThatLibjpegNotices) {
  int noticed = 0, noticedByLibjpeg = 0;
  Random random(1);
  for (const Source& source : kSources) {
    const EncodedImage whole =
        encodedByCjpeg({source.samples, 90, source.height / 3 + 1, kOneStrip, source.options});
    for (int i = 0; i < 40; ++i) {
      EncodedImage image = whole;
      Bytes& stream = image.strips[0];
      const Bytes afterStart = damaged(Bytes(stream.begin() + 2, stream.end()), random);
      stream.resize(2);
      stream.insert(stream.end(), afterStart.begin(), afterStart.end());
      CommandResult judged = djpeg(stream);
      // Of the JFIF segment, which is not copied.
      if (judged.output.find("unknown JFIF revision") != std::string::npos) judged.exitCode = 0;
      noticedByLibjpeg += judged.exitCode == 0 ? 0 : 1;
      std::optional<EncodedImage> result;
      const auto factors = JpegFactors{static_cast<std::int16_t>(20 * (i % 3)), 16};
      noticed += failureOf([&] { result = transcoded(image, factors); }).empty() ? 0 : 1;
      if (!result) continue;
      ASSERT_EQ(judged.exitCode, 0) << source.options << " try " << i << judged.output;
      EXPECT_EQ(djpeg(result->strips[0]).output, "");
    }
  }
  EXPECT_GT(noticedByLibjpeg, 130);
  EXPECT_GT(noticed, noticedByLibjpeg);
}

}  // namespace
}  // namespace orvane::test
