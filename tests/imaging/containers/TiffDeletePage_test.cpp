#include <gmock/gmock.h>

#include "imaging/containers/TiffFile.h"
#include "imaging/containers/container_checks.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/AsOrdinaryUser.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

using TiffDeletePage = FileTest;

// tiffsplit copies strips as they lie, and makes the same file of the same page.
TEST_F(TiffDeletePage, TheOtherPagesStayAsTheyAre) {
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
        judge("cp whole.tif out && chmod 640 out");
        TiffFile::deletePage(path, page);
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
        EXPECT_LT(fs::file_size(file), fs::file_size(station.native("whole.tif")) * 4 / 5);
        judge("rm -f new*; tiffsplit out new && test $(ls new* | wc -l) = 2 && " +
              std::string("cmp newaaa.tif oldaa") + left[0] + ".tif && cmp newaab.tif oldaa" +
              left[1] + ".tif");
        EXPECT_EQ(judge("tiffinfo out | grep -c 'too long for its' || true"),
                  page == 2 ? "0\n" : "1\n");
      }
    }
  }
}

// Old-style JPEG keeps a whole stream beside its strip.
TEST_F(TiffDeletePage, OldStyleJpegKeepsItsStream) {
  const Bytes stream = jpegPage().strips[0];
  const auto size = static_cast<std::uint32_t>(rawGrayPage(2, 2, "abcd").size());
  const std::string first = rawGrayPage(2, 2, "abcd", {}, size);
  writeBytes(
      file,
      rawGrayPage(61, 45, {stream.begin(), stream.end()},
                  {{259, 3, 1, 6}, {262, 3, 1, 6}, {277, 3, 1, 3}, {513, 4, 1, 0}, {514, 4, 1, 0}},
                  0, first));
  const Bytes before = TiffPage(path, 2).decode().raster.pixels;
  TiffFile::deletePage(path, 1);
  EXPECT_EQ(tiffPageCount(path), 1);
  const DecodedPage after = TiffPage(path, 1).decode();
  EXPECT_EQ(after.damage, std::nullopt);
  EXPECT_TRUE(after.raster.pixels == before);
}

TEST_F(TiffDeletePage, RefusalsLeaveTheFileAlone) {
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
  EXPECT_EQ(judge("ls"), "out\n") << "nothing written aside stays";
  judge("mv out other.tif && ln -s other.tif out");
  expectRefusal(1, "symbolic link");
}

}  // namespace
}  // namespace orvane::test
