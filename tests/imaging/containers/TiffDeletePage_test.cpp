#include <filesystem>
#include <gmock/gmock.h>
#include <memory>
#include <sstream>
#include <string>
#include <tiffio.h>
#include <vector>

#include "imaging/containers/TiffFile.h"
#include "imaging/containers/container_checks.h"
#include "imaging/containers/sample_pages.h"
#include "support/AsOrdinaryUser.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;
using Handle = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

struct TiffDeletePageTest : testing::Test {
  TempStation station;
  fs::path file = station.native("pages.tif");
  std::wstring path = station.path(L"pages.tif");
};

// All that libtiff says of every page, but for the places.
std::vector<std::string> describePages(const fs::path& file) {
  const std::string output = outputOf("tiffinfo -D " + quoted(file));
  EXPECT_THAT(output, Not(HasSubstr("rror"))) << output;
  std::vector<std::string> pages;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("TIFF Directory")) pages.emplace_back();
    if (line.starts_with("  ")) pages.back() += line + "\n";
  }
  return pages;
}

TEST_F(TiffDeletePageTest, TheOtherPagesStayAsTheyAre) {
  const std::vector<TiffKind> kinds{
      {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE, .compression = COMPRESSION_CCITTFAX4},
      {.bits = 16, .compression = COMPRESSION_LZW, .predictor = PREDICTOR_HORIZONTAL},
      {.bits = 4, .photometric = PHOTOMETRIC_PALETTE},
      {.samples = 3, .photometric = PHOTOMETRIC_RGB, .rowsPerStrip = 0},
      {.samples = 3, .photometric = PHOTOMETRIC_RGB, .rowsPerStrip = 1, .separate = true},
      {.samples = 3,
       .photometric = PHOTOMETRIC_YCBCR,
       .compression = COMPRESSION_JPEG,
       .rowsPerStrip = 16}};
  for (TiffKind kind : kinds) {
    for (const std::string mode : {"wl", "wb", "wl8", "wb8"}) {
      kind.mode = mode;
      for (std::size_t page = 1; page <= 3; ++page) {
        SCOPED_TRACE(mode + std::to_string(kind.compression) + " " + std::to_string(page));
        writeTiff(file, kind, 3);
        const std::uint64_t size = fs::file_size(file);
        std::vector<EncodedImage> expected = takePages(file);
        std::vector<std::string> descriptions = describePages(file);
        std::uint64_t dropped = 0;
        for (const Bytes& strip : expected[page - 1].strips) dropped += strip.size();
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(page) - 1);
        descriptions.erase(descriptions.begin() + static_cast<std::ptrdiff_t>(page) - 1);

        fs::permissions(file, fs::perms(0640));
        TiffFile::deletePage(path, static_cast<std::int32_t>(page));
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
        EXPECT_LE(fs::file_size(file), size - dropped) << "the data is gone too";
        EXPECT_EQ(describePages(file), descriptions);
        const std::vector<EncodedImage> left = takePages(file);
        ASSERT_EQ(left.size(), expected.size());
        for (std::size_t i = 0; i < left.size(); ++i) {
          EXPECT_EQ(left[i].strips, expected[i].strips);
        }
      }
    }
  }
}

// The second page has a private field, too long for its entry, and a smaller image in a directory
// below it.
void writeRichPages(const fs::path& file, const TiffKind& kind) {
  constexpr std::uint32_t kPrivateTag = 65001;
  static const TIFFFieldInfo kField[] = {{kPrivateTag, TIFF_VARIABLE2, TIFF_VARIABLE2, TIFF_DOUBLE,
                                          FIELD_CUSTOM, 1, 1, const_cast<char*>("Private")}};
  writeTiff(file, kind, 1);
  const Handle tiff(TIFFOpen(file.c_str(), "a"), TIFFClose);
  TIFFMergeFieldInfo(tiff.get(), kField, 1);
  const std::vector<double> numbers{1.5, 2.5, 3.5};
  std::uint64_t below[] = {0};
  TIFFSetField(tiff.get(), kPrivateTag, 3, numbers.data());
  TIFFSetField(tiff.get(), TIFFTAG_SUBIFD, 1, below);
  for (const std::uint8_t side : std::initializer_list<std::uint8_t>{40, 7}) {
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    std::vector<std::uint8_t> row(side, side);
    for (std::uint32_t y = 0; y < side; ++y) TIFFWriteScanline(tiff.get(), row.data(), y, 0);
    TIFFWriteDirectory(tiff.get());
  }
}

TEST_F(TiffDeletePageTest, DirectoriesBelowAPageAndPrivateFieldsTravelAlong) {
  for (const std::string mode : {"wl", "wb", "wl8"}) {
    SCOPED_TRACE(mode);
    writeRichPages(file, {.mode = mode});
    TiffFile::deletePage(path, 1);
    const Handle tiff(TIFFOpen(file.c_str(), "r"), TIFFClose);
    std::uint32_t count = 0;
    const double* numbers = nullptr;
    ASSERT_EQ(TIFFGetField(tiff.get(), 65001, &count, &numbers), 1);
    EXPECT_EQ(std::vector<double>(numbers, numbers + count), (std::vector<double>{1.5, 2.5, 3.5}));
    std::uint16_t belowCount = 0;
    const std::uint64_t* below = nullptr;
    ASSERT_EQ(TIFFGetField(tiff.get(), TIFFTAG_SUBIFD, &belowCount, &below), 1);
    ASSERT_EQ(TIFFSetSubDirectory(tiff.get(), below[0]), 1);
    std::vector<std::uint8_t> row(7);
    TIFFReadScanline(tiff.get(), row.data(), 6, 0);
    EXPECT_EQ(row, std::vector<std::uint8_t>(7, 7));
  }
}

// Old-style JPEG keeps a whole stream beside its strip, which lies inside it.
TEST_F(TiffDeletePageTest, OldStyleJpegKeepsItsStream) {
  const SampleDocument jpeg = makeDocuments(station.native()).back();
  const Bytes& stream = jpeg.pages[0].strips[0];
  const std::string data(stream.begin(), stream.end());
  const std::vector<RawEntry> plain{{256, 3, 1, 4}, {257, 3, 1, 1},   {258, 3, 1, 8},
                                    {262, 3, 1, 1}, {273, 4, 1, 124}, {279, 4, 1, 4}};
  std::string bytes = rawTiff(plain, 0, "abcd");
  const auto second = static_cast<std::uint32_t>(bytes.size());
  bytes.replace(rawDataOffset(plain) - 4, 1, 1, static_cast<char>(second));
  const std::uint32_t at = second + 2 + 12 * 11 + 4;
  const auto length = static_cast<std::uint32_t>(data.size());
  bytes += rawTiff({{256, 3, 1, 61},
                    {257, 3, 1, 61},
                    {258, 3, 1, 8},
                    {259, 3, 1, 6},
                    {262, 3, 1, 6},
                    {273, 4, 1, at + 600},
                    {277, 3, 1, 3},
                    {278, 3, 1, 61},
                    {279, 4, 1, length - 600},
                    {513, 4, 1, at},
                    {514, 4, 1, length}},
                   0, data)
               .substr(8);
  writeBytes(file, bytes);
  TiffFile::deletePage(path, 1);
  const std::string left = readBytes(file);
  EXPECT_EQ(left.size(), bytes.size() - second + 8) << "only the first page is gone";
  EXPECT_EQ(left.substr(left.size() - data.size()), data);
  std::uint64_t offset = 0;
  const Handle tiff(TIFFOpen(file.c_str(), "r"), TIFFClose);
  ASSERT_EQ(TIFFGetField(tiff.get(), TIFFTAG_JPEGIFOFFSET, &offset), 1);
  EXPECT_EQ(offset, left.size() - data.size());
  EXPECT_EQ(TIFFGetStrileOffset(tiff.get(), 0), offset + 600);
}

TEST_F(TiffDeletePageTest, RefusalsLeaveTheFileAlone) {
  const auto expectRefusal = [&](std::int32_t page, const std::string& text) {
    const std::string before = readBytes(file);
    EXPECT_THAT(failureOf([&] { TiffFile::deletePage(path, page); }), HasSubstr(text));
    EXPECT_EQ(readBytes(file), before);
  };
  expectRefusal(1, "No such file or directory");
  writeTiff(file, {}, 1);
  expectRefusal(1, "the only page");
  writeTiff(file, {}, 2);
  for (const std::int32_t page : {-1, 0, 3}) expectRefusal(page, "there is no page");
  {
    fs::permissions(station.native(), fs::perms(0555));
    const AsOrdinaryUser user;
    expectRefusal(1, "Permission denied");
  }
  fs::permissions(station.native(), fs::perms(0755));
  fs::create_symlink(file, station.native("link.tif"));
  EXPECT_THAT(failureOf([&] { TiffFile::deletePage(station.path(L"link.tif"), 1); }),
              HasSubstr("symbolic link"));
  for (std::uint64_t limit = 0; limit < 3000; limit += 500) {
    const std::string before = readBytes(file);
    EXPECT_FALSE(succeedsUnderSizeLimit(limit, [&] { TiffFile::deletePage(path, 1); }));
    EXPECT_EQ(readBytes(file), before) << limit;
  }
  const auto names = std::distance(fs::directory_iterator(station.native()), {});
  EXPECT_EQ(names, 2) << "nothing written aside stays";
}

}  // namespace
}  // namespace orvane::test
