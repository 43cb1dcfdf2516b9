#include "imaging/containers/TiffFile.h"

#include <gmock/gmock.h>

#include "imaging/containers/container_checks.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/failureOf.h"

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
  remembering.append(path, plainPage(0));
  for (unsigned i = 1; i < 4; ++i) {
    const std::string before = bytes();
    remembering.append(path, plainPage(i));
    int changed = 0;
    for (std::size_t at = 0; at < before.size(); ++at) changed += bytes()[at] != before[at];
    EXPECT_LE(changed, 4) << "only the link to the new page";
    EXPECT_THAT(info(), AllOf(HasSubstr("Page Number: " + std::to_string(i) + "-0"),
                              HasSubstr("Resolution: 203.2, 300 pixels/inch")));
  }
  const std::string grown = bytes();
  fs::remove(file);
  for (unsigned i = 0; i < 4; ++i) TiffFile().append(path, plainPage(i));
  EXPECT_EQ(bytes(), grown) << "whether the end was remembered or found";
  remembering.append(path, plainPage(4));
  expectPages(5);
  TiffFile().create(path, plainPage(5));  // another file under the old name
  remembering.append(path, plainPage(6));
  expectPages(2);
}

TEST_F(TiffFileTest, FilesOfOtherProgramsGrowInTheirOwnForm) {
  writeTiff(station.native("base.tif"), {.bits = 16}, 3);
  const Raster last = TiffPage(station.path(L"base.tif"), 3).decode().raster;
  for (const std::string form : {"-L", "-B", "-8 -L", "-8 -B"}) {
    SCOPED_TRACE(form);
    judge("tiffcp -c none " + form + " base.tif,0 base.tif,1 out");
    const SampleOrder order = TiffFile().sampleOrder(path);
    EXPECT_EQ(order, form.ends_with("B") ? SampleOrder::BigEndian : SampleOrder::LittleEndian);
    TiffFile().append(path, encodeUncompressed(last, order));
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
      {good.substr(0, 4) + std::string("\xF0\xFF\0\0", 4) + good.substr(8), "points past the end"},
      {good.substr(0, good.size() / 2), "points past the end"},
      {rawGrayPage(8, 8, std::string(64, 'x'), {}, 8), "run in a circle"},
      {std::string("II*\0\x08\0\0\0\0\0\0\0\0\0", 14), "absurd number of entries"}};
  for (const auto& [content, text] : cases) {
    writeBytes(file, content);
    EXPECT_THAT(failureOf([&] { TiffFile().append(path, plainPage(1)); }),
                AllOf(HasSubstr("out: "), HasSubstr(text)));
    EXPECT_EQ(bytes(), content);
  }
}

TEST_F(TiffFileTest, AClassicFileNeverPasses4GiB) {
  TiffFile tiff;
  tiff.create(path, plainPage(0));
  constexpr std::uint64_t kFull = (std::uint64_t{1} << 32) - 200;
  fs::resize_file(file, kFull);  // a hole, no disk space
  EXPECT_THAT(failureOf([&] { tiff.append(path, plainPage(1)); }), HasSubstr("past 4 GiB"));
  EXPECT_EQ(fs::file_size(file), kFull);
  writeTiff(station.native("base.tif"), TiffKind{});
  judge("tiffcp -8 base.tif out && truncate -s 4G out");
  tiff.append(path, plainPage(1));
  expectPages(2);
}

}  // namespace
}  // namespace orvane::test
