#include "imaging/tiff/TiffFile.h"

#include <gmock/gmock.h>

#include "imaging/container_checks.h"
#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/AsOrdinaryUser.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

struct TiffFileTest : FileTest {
  // What tiffinfo says of the file, of which it decodes every strip; complaints would stand in it.
  std::string info() const {
    const std::string output = judge("tiffinfo -D out");
    EXPECT_THAT(output, Not(testing::AnyOf(HasSubstr("arning"), HasSubstr("rror"))));
    return output;
  }
  void expectPages(int count) const {
    info();
    EXPECT_EQ(judge("tiffinfo out | grep -c ===.TIFF"), std::to_string(count) + "\n");
  }
};

TEST_F(TiffFileTest, AnAppendLeavesEarlierBytesAndNumbersThePages) {
  TiffFile remembering;
  remembering.append(path, always(plainPage(0)));
  for (unsigned i = 1; i < 4; ++i) {
    const std::string before = bytes();
    remembering.append(path, always(plainPage(i)));
    int changed = 0;
    for (std::size_t at = 0; at < before.size(); ++at) changed += bytes()[at] != before[at];
    EXPECT_LE(changed, 4) << "only the link to the new page";
    EXPECT_THAT(info(), AllOf(HasSubstr("Page Number: " + std::to_string(i) + "-0"),
                              HasSubstr("Resolution: 203.2, 300 pixels/inch")));
  }
  const std::string grown = bytes();
  fs::remove(file);
  for (unsigned i = 0; i < 4; ++i) TiffFile().append(path, always(plainPage(i)));
  EXPECT_EQ(bytes(), grown) << "whether the end was remembered or found";
  remembering.append(path, always(plainPage(4)));
  expectPages(5);
  TiffFile().create(path, plainPage(5));  // another file under the old name
  remembering.append(path, always(plainPage(6)));
  expectPages(2);
}

TEST_F(TiffFileTest, FilesOfOtherProgramsKeepTheirVariant) {
  writeTiff(station.native("base.tif"), {.bits = 16}, 3);
  const Raster last = TiffPage(station.path(L"base.tif"), 3).decode().value;
  for (const std::string variant : {"-L", "-B", "-8 -L", "-8 -B"}) {
    SCOPED_TRACE(variant);
    judge("tiffcp -c none " + variant + " base.tif,0 base.tif,1 out");
    TiffFile().append(path, [&](SampleOrder order) {
      EXPECT_EQ(order, variant.ends_with("B") ? SampleOrder::BigEndian : SampleOrder::LittleEndian);
      return encodeUncompressed(last, order);
    });
    expectPages(3);
    judge("tiffcmp -t out base.tif");
  }
}

TEST_F(TiffFileTest, WhatIsNoGrowingTiffIsRefusedAndStays) {
  TiffFile().create(path, plainPage(0));
  const std::string good = bytes();
  const std::pair<std::string, std::string> cases[] = {
      {"", "not a TIFF file"},
      {"just a text file", "not a TIFF file"},
      {good.substr(0, 4) + std::string("\xF0\xFF\0\0", 4) + good.substr(8),
       "list of pages is damaged"},
      {good.substr(0, good.size() / 2), "list of pages is damaged"},
      {rawGrayPage(8, 8, std::string(64, 'x'), {}, 8), "runs in a circle"},
      {std::string("II*\0\x08\0\0\0\0\0\0\0\0\0", 14), "list of pages is damaged"}};
  for (const auto& [content, text] : cases) {
    writeBytes(file, content);
    EXPECT_THAT(failureOf([&] { TiffFile().append(path, always(plainPage(1))); }),
                AllOf(HasSubstr("out: "), HasSubstr(text)));
    EXPECT_EQ(bytes(), content);
  }
}

TEST_F(TiffFileTest, AClassicFileNeverPasses4GiB) {
  TiffFile tiff;
  tiff.create(path, plainPage(0));
  constexpr std::uint64_t kFull = (std::uint64_t{1} << 32) - 200;
  fs::resize_file(file, kFull);  // a hole, no disk space
  EXPECT_THAT(failureOf([&] { tiff.append(path, always(plainPage(1))); }), HasSubstr("past 4 GiB"));
  EXPECT_EQ(fs::file_size(file), kFull);
  writeTiff(station.native("base.tif"), TiffKind{});
  judge("tiffcp -8 base.tif out && truncate -s 4G out");
  tiff.append(path, always(plainPage(1)));
  expectPages(2);
}

// 254 / 3 is a scanner's 100 dots a centimetre over three; numbers of single precision are common.
TEST_F(TiffFileTest, ResolutionsAreTheNearestFractions) {
  const std::tuple<double, std::uint32_t, std::uint32_t> cases[] = {
      {300, 300, 1},   {203.2F, 1016, 5},   {254.0 / 3, 254, 3},   {72.27, 7227, 100},
      {1e-3, 1, 1000}, {1e6, 1'000'000, 1}, {199.995F, 39999, 200}};
  for (const auto& [dpi, numerator, denominator] : cases) {
    EncodedImage page = plainPage(0);
    page.resolution = {1, dpi};
    TiffFile().create(path, page);
    const std::uint32_t fractions[] = {1, 1, numerator, denominator};
    const std::string stored(reinterpret_cast<const char*>(fractions), sizeof fractions);
    EXPECT_THAT(bytes(), HasSubstr(stored)) << dpi;
  }
}

using TiffDeletePage = TiffFileTest;

// tiffsplit copies strips unchanged and makes the same file of the same page.
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

TEST_F(TiffDeletePage, TheOtherPagesAreNumberedAgain) {
  const auto numbers = [&] {
    info();
    return judge("tiffinfo out | sed -n 's/.*Page Number: //p' | xargs");
  };
  for (unsigned i = 0; i < 4; ++i) TiffFile().append(path, always(plainPage(i)));
  for (const int page : {1, 2}) TiffFile::deletePage(path, page);
  EXPECT_EQ(numbers(), "0-0 1-0\n");
  TiffFile().append(path, always(plainPage(4)));
  EXPECT_EQ(numbers(), "0-0 1-0 2-0\n");
  // Another program's file, which knows its number of pages.
  writeTiff(station.native("base.tif"), {.bits = 16}, 3);
  for (const char* form : {" -L ", " -B ", " -L -8 ", " -B -8 "}) {
    judge(std::string("tiffcp -c none") + form + "base.tif real.tif; " +
          "for i in 0 1 2; do tiffset -d $i -s 297 $i 3 real.tif; done; ln -sf real.tif out");
    TiffFile::deletePage(path, 2);
    EXPECT_EQ(numbers(), "0-2 1-2\n");
    EXPECT_TRUE(fs::is_symlink(file)) << "the file that the link leads to is shorter";
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
  const Bytes before = TiffPage(path, 2).decode().value.pixels;
  TiffFile::deletePage(path, 1);
  EXPECT_EQ(tiffPageCount(path), 1);
  const Examined<Raster> after = TiffPage(path, 1).decode();
  EXPECT_EQ(after.data.damage, std::nullopt);
  EXPECT_TRUE(after.value.pixels == before);
}

// tiffcp follows the directories that hang below the page that stays, the second linked from the
// first.
TEST_F(TiffDeletePage, DirectoriesBelowAPageFollowIt) {
  const auto size = static_cast<std::uint32_t>(rawGrayPage(2, 2, "abcd").size());
  const std::uint32_t step = size - 8;
  const std::pair<std::uint16_t, std::uint16_t> fields[] = {{330, 4}, {330, 13}, {65000, 13}};
  for (const auto& [tag, type] : fields) {
    std::string front = rawGrayPage(2, 2, "abcd", {}, size + 2 * step);
    front = rawGrayPage(2, 2, "wxyz", {}, size + step, front);
    front = rawGrayPage(2, 2, "WXYZ", {}, 0, front);
    writeBytes(file, rawGrayPage(2, 2, "page", {{tag, type, 1, size}}, 0, front));
    TiffFile::deletePage(path, 1);
    judge(
        "tiffcp -o $(tiffinfo out | sed -nE 's/.*(SubIFD Offsets|Tag 65000): *//p') out below.tif");
    EXPECT_THAT(readBytes(station.native("below.tif")),
                AllOf(HasSubstr("wxyz"), HasSubstr("WXYZ")));
    EXPECT_THAT(bytes(), AllOf(HasSubstr("page"), Not(HasSubstr("abcd"))));
  }
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
  std::vector<RawEntry> many(5000);
  for (std::uint16_t i = 0; i < many.size(); ++i) {
    many[i] = {static_cast<std::uint16_t>(40000 + i), 3, 1, 0};
  }
  const std::string first = rawGrayPage(2, 2, "abcd", {}, 8 + 2 + 9 * 12 + 4 + 4);
  writeBytes(file, rawGrayPage(2, 2, "page", many, 0, first));
  expectRefusal(1, "absurd number of entries");
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
  judge("ln out second");
  expectRefusal(1, "second hard link");
}

}  // namespace
}  // namespace orvane::test
