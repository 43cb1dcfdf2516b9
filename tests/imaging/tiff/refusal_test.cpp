#include <gmock/gmock.h>
#include <sys/stat.h>

#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

struct Refusal : testing::Test {
  TempStation station;
  std::wstring path = station.path(L"page.tif");

  std::string openFailure(const std::string& bytes, std::int32_t page = 1) const {
    writeBytes(station.native("page.tif"), bytes);
    return failureOf([&] { TiffPage(path, page); });
  }
};

const std::string kPixels(64, 'x');

std::vector<RawEntry> square(std::uint32_t side, std::vector<RawEntry> entries) {
  entries.insert(entries.end(), {{256, 4, 1, side}, {257, 4, 1, side}, {278, 4, 1, side}});
  return entries;
}

TEST_F(Refusal, WhatIsNoTiffFileIsRefusedWithPathAndReason) {
  std::filesystem::create_directory(station.native("folder"));
  mkfifo(station.native("pipe").c_str(), 0600);
  writeBytes(station.native("empty"), "");
  writeBytes(station.native("text"), "a text file, and not a short one");
  writeBytes(station.native("header"), std::string("II*\0\0\0\0\0", 8));
  writeBytes(station.native("outside"), std::string("MM\0*\0\1\0\0", 8));
  const std::pair<std::wstring, std::string> cases[] = {{L"missing", "No such file"},
                                                        {L"folder", "directory"},
                                                        {L"pipe", "Invalid argument"},
                                                        {L"empty", "TIFF header"},
                                                        {L"text", "bad magic number"},
                                                        {L"header", "no page"},
                                                        {L"outside", "list of pages is damaged"}};
  for (const auto& [name, reason] : cases) {
    const std::wstring file = station.path(name);
    const auto tells =
        AllOf(HasSubstr(Failure(file).what() + std::string(": ")), HasSubstr(reason));
    EXPECT_THAT(failureOf([&] { TiffPage(file, 1); }), tells);
    EXPECT_THAT(failureOf([&] { tiffPageCount(file); }), tells);
  }
}

TEST_F(Refusal, APageThatCannotBeDecodedIsRefusedAtOnce) {
  EXPECT_EQ(openFailure(rawGrayPage(8, 8, kPixels)), "");
  const std::pair<std::vector<RawEntry>, std::string> cases[] = {
      {{{256, 4, 1, 400'000'000}, {259, 3, 1, 4}, {258, 3, 1, 1}}, "400000000 x 8 pixels"},
      {{{257, 4, 1, 0}}, "zero number of strips"},
      {{{256, 4, 1, 900'000}, {257, 4, 1, 900'000}, {278, 4, 1, 900'000}}, "1 GiB"},
      {{{256, 4, 1, 30'000}, {257, 4, 1, 30'000}, {278, 4, 1, 30'000}, {274, 3, 1, 6}}, "1 GiB"},
      {{{322, 4, 1, 800'000}, {323, 4, 1, 800'000}}, "1 GiB"},
      {square(14'000, {{262, 3, 1, 8}, {277, 3, 1, 3}}), "1 GiB"},
      {square(13'000, {{259, 3, 1, 34676}, {262, 3, 1, 32845}, {277, 3, 1, 3}}), "1 GiB"},
      {square(13'000, {{259, 3, 1, 50001}, {262, 3, 1, 2}, {277, 3, 1, 3}}), "1 GiB"},
      {{{322, 4, 1, 0}, {323, 4, 1, 16}}, "zero number of tiles"},
      {{{322, 4, 1, 12}, {323, 4, 1, 16}}, "12 pixels across"},
      {{{258, 3, 1, 12}}, "12 bits"},
      {{{258, 3, 1, 16}, {339, 3, 1, 3}}, "format 3"},
      {{{259, 3, 1, 34712}}, "compression 34712"},
      {{{259, 3, 1, 4}}, "not 1-bit"},
      {{{262, 3, 1, 8}}, "interpretation 8"},
      {{{262, 3, 1, 10}}, "interpretation 10"},
      {{{262, 3, 1, 32844}}, "LogL data must have Compression=34676"},
      {{{259, 3, 1, 34676}, {262, 3, 1, 32844}, {277, 3, 1, 2}}, "too many samples"},
      {{{262, 3, 1, 2}}, "too few samples"},
      {{{262, 3, 1, 3}, {258, 3, 1, 4}}, "olor"},
      {{{278, 4, 1, 2}}, "it names 1 of 4"},
  };
  for (const auto& [changes, reason] : cases) {
    EXPECT_THAT(openFailure(rawGrayPage(8, 8, kPixels, changes)), HasSubstr(reason));
  }
  // A hundred thousand strips, each of them said to be the whole file.
  const std::uint32_t strips = 100'000;
  const std::vector<RawEntry> overlapping = {
      {259, 3, 1, 5}, {273, 4, strips, 0}, {278, 4, 1, 1}, {279, 4, strips, 0}};
  EXPECT_THAT(openFailure(rawGrayPage(8, strips, std::string(4 * strips, '\1'), overlapping)),
              HasSubstr("longer than the file"));
}

TEST_F(Refusal, ListsOfPagesThatDoNotEndAreToldAndTheirGoodPagesOpen) {
  const std::pair<std::uint32_t, std::string> cases[] = {
      {8, "circle"}, {0xFFFFFF00, "damaged"}, {100, "damaged"}};
  for (const auto& [next, reason] : cases) {
    const std::string bytes = rawGrayPage(8, 8, kPixels, {}, next);
    EXPECT_EQ(openFailure(bytes, 1), "");
    EXPECT_THAT(openFailure(bytes, 2), HasSubstr(reason));
    EXPECT_THAT(failureOf([&] { tiffPageCount(path); }), HasSubstr(reason));
  }
  for (const std::int32_t page : {-1, 0, 2, 32767}) {
    EXPECT_THAT(openFailure(rawGrayPage(8, 8, kPixels), page),
                HasSubstr("no page " + std::to_string(page)));
  }
}

}  // namespace
}  // namespace orvane::test
