#include "imaging/containers/TiffFile.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <tiffio.h>
#include <vector>

#include "foundation/path_text.h"
#include "imaging/containers/container_checks.h"
#include "imaging/containers/sample_pages.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

struct TiffFileTest : testing::Test {
  TempStation station;
  fs::path file = station.native("out.tif");
  std::wstring path = station.path(L"out.tif");

  std::string bytes() const { return readBytes(file); }
};

// tiffinfo -D decodes every strip; a complaint of libtiff's would stand in its output.
std::string tiffinfo(const fs::path& file) {
  const std::string output = outputOf("tiffinfo -D " + quoted(file));
  EXPECT_THAT(output, Not(HasSubstr("arning"))) << output;
  EXPECT_THAT(output, Not(HasSubstr("rror"))) << output;
  return output;
}

int pageCount(const std::string& tiffinfoOutput) {
  int count = 0;
  for (std::size_t at = 0; (at = tiffinfoOutput.find("=== TIFF", at)) != std::string::npos; ++at) {
    ++count;
  }
  return count;
}

void expectSamePixels(const fs::path& left, const fs::path& right) {
  const CommandResult result = runCommand("tiffcmp -t " + quoted(left) + " " + quoted(right));
  EXPECT_EQ(result.exitCode, 0) << left << "\n" << result.output;
}

void writeAll(TiffFile& tiff, const std::wstring& path, const std::vector<EncodedImage>& pages) {
  tiff.create(path, pages[0]);
  for (std::size_t i = 1; i < pages.size(); ++i) tiff.append(path, pages[i]);
}

TEST_F(TiffFileTest, OutsideReadersSeeThePagesOfEveryKind) {
  for (const SampleDocument& document : makeDocuments(station.native())) {
    SCOPED_TRACE(document.name);
    TiffFile tiff;
    writeAll(tiff, path, document.pages);
    const std::string first = bytes();
    EXPECT_EQ(pageCount(tiffinfo(file)), static_cast<int>(document.pages.size()));
    outputOf("identify " + quoted(file));
    if (document.reference.extension() == ".tif") {
      expectSamePixels(file, document.reference);
    } else {
      EXPECT_EQ(runCommand("compare -metric AE " + quoted(file) + " " + quoted(document.reference) +
                           " null:")
                    .output,
                "0");
    }
    writeAll(tiff, path, document.pages);
    EXPECT_EQ(bytes(), first) << "the same pages give the same bytes";
  }
}

TEST_F(TiffFileTest, ResolutionsComeOutExact) {
  struct Case {
    double resolution;
    std::string text;
  };
  TiffFile tiff;
  for (const auto& [resolution, text] : std::vector<Case>{{200, "200"},
                                                          {203.2F, "203.2"},
                                                          {299.9994F, "299.999"},
                                                          {72.009, "72.009"},
                                                          {0.5, "0.5"}}) {
    EncodedImage image = plainPage(1);
    image.resolution = {resolution, 300};
    tiff.create(path, image);
    EXPECT_THAT(tiffinfo(file), HasSubstr("Resolution: " + text + ", 300 pixels/inch"));
  }
}

TEST_F(TiffFileTest, AnAppendLeavesEarlierBytesAndNumbersThePages) {
  TiffFile remembering;
  remembering.append(path, plainPage(0));
  for (unsigned i = 1; i < 4; ++i) {
    const std::string before = bytes();
    remembering.append(path, plainPage(i));
    std::string front = bytes().substr(0, before.size());
    int changed = 0;
    for (std::size_t at = 0; at < before.size(); ++at) changed += front[at] != before[at] ? 1 : 0;
    EXPECT_LE(changed, 4) << "only the link to the new page";
    EXPECT_THAT(tiffinfo(file), HasSubstr("Page Number: " + std::to_string(i) + "-0"));
  }
  const std::string grown = bytes();
  fs::remove(file);
  for (unsigned i = 0; i < 4; ++i) TiffFile().append(path, plainPage(i));
  EXPECT_EQ(bytes(), grown) << "whether the end was remembered or found";
}

TEST_F(TiffFileTest, AChangedFileIsNoticedAndItsEndFoundAnew) {
  TiffFile tiff;
  tiff.create(path, plainPage(0));
  TiffFile().append(path, plainPage(1));
  tiff.append(path, plainPage(2));
  EXPECT_EQ(pageCount(tiffinfo(file)), 3);
  TiffFile().create(path, plainPage(5));  // another file under the old name
  tiff.append(path, plainPage(6));
  EXPECT_EQ(pageCount(tiffinfo(file)), 2);
}

TEST_F(TiffFileTest, FilesOfOtherProgramsGrowInTheirOwnForm) {
  for (const std::string mode : {"wl", "wb", "wl8", "wb8"}) {
    SCOPED_TRACE(mode);
    const SampleDocument document =
        makeDocument(station.native(), "foreign" + mode, {.bits = 16, .mode = mode});
    writeTiff(file, {.bits = 16, .mode = mode}, 2);
    const bool bigEndian = mode[1] == 'b';
    EXPECT_EQ(TiffFile().sampleOrder(path),
              bigEndian ? SampleOrder::BigEndian : SampleOrder::LittleEndian);
    TiffFile().append(path, document.pages[2]);
    EXPECT_EQ(pageCount(tiffinfo(file)), 3);
    expectSamePixels(file, document.reference);
  }
  EXPECT_EQ(TiffFile().sampleOrder(station.path(L"none.tif")), SampleOrder::LittleEndian);
}

TEST_F(TiffFileTest, WhatIsNoGrowingTiffIsRefusedAndStays) {
  TiffFile().create(path, plainPage(0));
  const std::string good = bytes();
  struct Case {
    std::string content;
    std::string text;
  };
  const std::vector<Case> cases{
      {"", "not a TIFF file"},
      {"just a text file", "not a TIFF file"},
      {good.substr(0, 4) + std::string("\xF0\xFF\0\0", 4) + good.substr(8), "points past the end"},
      {good.substr(0, good.size() / 2), "points past the end"},
      {rawTiff({{256, 4, 1, 1}}, 8), "run in a circle"},
      {rawTiff({}), "absurd number of entries"},
  };
  for (const auto& [content, text] : cases) {
    writeBytes(file, content);
    const std::string failure = failureOf([&] { TiffFile().append(path, plainPage(1)); });
    EXPECT_THAT(failure, HasSubstr("out.tif: "));
    EXPECT_THAT(failure, HasSubstr(text));
    EXPECT_EQ(bytes(), content);
  }
}

TEST_F(TiffFileTest, ImagesThatDoNotFitTogetherAreRefused) {
  TiffFile().create(path, plainPage(0));
  const std::string good = bytes();
  void (*const faults[])(EncodedImage&){
      [](EncodedImage& i) { i.strips.clear(); },
      [](EncodedImage& i) { i.strips[0].pop_back(); },
      [](EncodedImage& i) { i.rowsPerStrip = 0; },
      [](EncodedImage& i) { i.photometric = Photometric::Palette; },
      [](EncodedImage& i) { i.resolution.y = std::numeric_limits<double>::quiet_NaN(); },
  };
  for (const auto& fault : faults) {
    EncodedImage image = plainPage(1);
    fault(image);
    EXPECT_NE(failureOf([&] { TiffFile().append(path, image); }), "");
    EXPECT_NE(failureOf([&] { TiffFile().create(path, image); }), "");
    EXPECT_EQ(bytes(), good);
  }
}

TEST_F(TiffFileTest, AClassicFileNeverPasses4GiB) {
  TiffFile tiff;
  tiff.create(path, plainPage(0));
  constexpr std::uint64_t kFull = (std::uint64_t{1} << 32) - 200;
  fs::resize_file(file, kFull);  // a hole, no disk space
  EXPECT_THAT(failureOf([&] { tiff.append(path, plainPage(1)); }), HasSubstr("past 4 GiB"));
  EXPECT_EQ(fs::file_size(file), kFull);

  writeTiff(file, {.mode = "wl8"});
  fs::resize_file(file, kFull + 4096);
  tiff.append(path, plainPage(1));
  EXPECT_EQ(pageCount(tiffinfo(file)), 2) << "BigTIFF goes on";
}

}  // namespace
}  // namespace orvane::test
