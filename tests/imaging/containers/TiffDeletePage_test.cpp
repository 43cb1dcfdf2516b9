#include <gmock/gmock.h>
#include <memory>
#include <tiffio.h>

#include "imaging/containers/TiffFile.h"
#include "imaging/containers/container_checks.h"
#include "imaging/containers/sample_pages.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/AsOrdinaryUser.h"
#include "support/TempStation.h"
#include "support/command.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;
using Handle = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

struct TiffDeletePageTest : testing::Test {
  TempStation station;
  fs::path file = station.native("pages.tif");
  std::wstring path = station.path(L"pages.tif");

  std::string judge(const std::string& commands) const {
    return outputOf("cd " + quoted(station.native()) + " && " + commands);
  }
};

// tiffsplit copies strips as they lie, and makes the same file of the same page.
TEST_F(TiffDeletePageTest, TheOtherPagesStayAsTheyAre) {
  const TiffKind rgb{.samples = 3, .photometric = PHOTOMETRIC_RGB};
  const std::pair<TiffKind, std::string> kinds[] = {
      {{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE}, "-c g4"},
      {{.bits = 16}, "-c lzw:2"},
      {{.bits = 4, .photometric = PHOTOMETRIC_PALETTE}, "-c none"},
      {rgb, "-c none -t -w 32 -l 16"},
      {rgb, "-p separate -r 1"},
      {rgb, "-c jpeg -r 16"}};
  for (const auto& [kind, storage] : kinds) {
    writeTiff(station.native("base.tif"), kind, 3);
    for (const char* form : {" -L ", " -B ", " -L -8 ", " -B -8 "}) {
      judge("tiffcp " + storage + form + "base.tif whole.tif && " +
            "tiffset -d 1 -s 270 'A text too long for its entry' whole.tif && " +
            "tiffsplit whole.tif old");
      for (const auto& [page, left] : {std::pair{1, "bc"}, {2, "ac"}, {3, "ab"}}) {
        SCOPED_TRACE(storage + form + std::to_string(page));
        judge("cp whole.tif pages.tif && chmod 640 pages.tif");
        TiffFile::deletePage(path, page);
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
        EXPECT_LT(fs::file_size(file), fs::file_size(station.native("whole.tif")) * 4 / 5);
        judge("rm -f new*; tiffsplit pages.tif new && test $(ls new* | wc -l) = 2 && " +
              std::string("cmp newaaa.tif oldaa") + left[0] + ".tif && cmp newaab.tif oldaa" +
              left[1] + ".tif");
        EXPECT_EQ(judge("tiffinfo pages.tif | grep -c 'too long for its' || true"),
                  page == 2 ? "0\n" : "1\n");
      }
    }
  }
}

// The second page has a smaller image in a directory below it.
void writePageWithSmallerImage(const fs::path& file) {
  writeTiff(file, TiffKind{});
  const Handle tiff(TIFFOpen(file.c_str(), "a"), TIFFClose);
  const std::uint64_t below[] = {0};
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

TEST_F(TiffDeletePageTest, ADirectoryBelowAPageTravelsAlong) {
  writePageWithSmallerImage(file);
  TiffFile::deletePage(path, 1);
  const Handle tiff(TIFFOpen(file.c_str(), "r"), TIFFClose);
  std::uint16_t count = 0;
  const std::uint64_t* below = nullptr;
  ASSERT_EQ(TIFFGetField(tiff.get(), TIFFTAG_SUBIFD, &count, &below), 1);
  ASSERT_EQ(TIFFSetSubDirectory(tiff.get(), below[0]), 1);
  std::vector<std::uint8_t> row(7);
  TIFFReadScanline(tiff.get(), row.data(), 6, 0);
  EXPECT_EQ(row, std::vector<std::uint8_t>(7, 7));
}

// Old-style JPEG keeps a whole stream beside its strip.
TEST_F(TiffDeletePageTest, OldStyleJpegKeepsItsStream) {
  const Bytes stream = makeDocuments(station.native()).back().pages[0].strips[0];
  writeBytes(file,
             rawGrayPage(
                 61, 45, {stream.begin(), stream.end()},
                 {{259, 3, 1, 6}, {262, 3, 1, 6}, {277, 3, 1, 3}, {513, 4, 1, 0}, {514, 4, 1, 0}}));
  const Bytes before = TiffPage(path, 1).decode().raster.pixels;
  TiffFile().append(path, plainPage(0));
  TiffFile::deletePage(path, 2);
  const DecodedPage after = TiffPage(path, 1).decode();
  EXPECT_EQ(after.damage, std::nullopt);
  EXPECT_TRUE(after.raster.pixels == before);
  EXPECT_EQ(tiffPageCount(path), 1);
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
  for (std::uint64_t limit = 0; limit < 3000; limit += 500) {
    const FullDisk disk(limit);
    expectRefusal(1, "File too large");
  }
  EXPECT_EQ(judge("ls"), "pages.tif\n") << "nothing written aside stays";
  judge("mv pages.tif other.tif && ln -s other.tif pages.tif");
  expectRefusal(1, "symbolic link");
}

}  // namespace
}  // namespace orvane::test
