#include "foundation/OutputFile.h"

#include <functional>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "imaging/container_checks.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/pdf/PdfFile.h"
#include "imaging/tiff/TiffFile.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;
using Writer = std::function<void()>;

struct OutputFileTest : FileTest {
  EncodedImage jpeg = jpegPage();
  TiffFile tiff;
  PdfFile pdf;
  std::vector<Writer> creators{[this] { TiffFile().create(path, jpeg); },
                               [this] { PdfFile().create(path, jpeg); },
                               [this] { writeJpegFile(path, jpeg); }};
  std::vector<Writer> appenders{[this] { tiff.append(path, always(profiledPage(1))); },
                                [this] { pdf.append(path, profiledPage(1)); }};

  void writePages(const Writer& append, int count) const {
    fs::remove(file);
    for (int i = 0; i < count; ++i) append();
  }
};

TEST_F(OutputFileTest, NoFileIsWrittenThroughAnotherName) {
  const fs::path other = station.native("other");
  const std::pair<std::string, std::function<void()>> others[] = {
      {"the name is a symbolic link", [&] { fs::create_symlink(other, file); }},
      {"second hard link", [&] { fs::create_hard_link(other, file); }},
      {"Is a directory", [&] { fs::create_directory(file); }},
      {"not a regular file", [&] { mkfifo(file.c_str(), 0600); }}};
  for (const auto& [reason, make] : others) {
    for (const Writer& append : appenders) {
      writePages(append, 1);
      fs::rename(file, other);
      const std::string before = readBytes(other);
      make();
      EXPECT_THAT(failureOf(append), AllOf(HasSubstr("out: "), HasSubstr(reason)));
      EXPECT_EQ(readBytes(other), before);
    }
    for (const Writer& create : creators) {  // a link is replaced
      fs::remove(file);
      make();
      const std::string failure = failureOf(create);
      if (!reason.ends_with("link")) continue;
      EXPECT_EQ(failure, "");
      EXPECT_FALSE(fs::is_symlink(file));
      EXPECT_NE(bytes(), readBytes(other));
    }
  }
  path = station.path(L"none\\out");
  for (const Writer& create : creators) EXPECT_THAT(failureOf(create), HasSubstr("No such file"));
}

TEST_F(OutputFileTest, APageIsRemovedFromAFileInAnyLetterCase) {
  const std::filesystem::path scan = station.native("Batchs/B/P.TIF");
  const std::wstring asked = station.path(L"Batchs\\b\\p.tif");
  const std::pair<Writer, Writer> files[] = {
      {appenders[0], [&] { TiffFile::deletePage(asked, 1); }},
      {appenders[1], [&] { PdfFile::deletePage(asked, 1); }}};
  for (const auto& [append, remove] : files) {
    writePages(append, 2);
    const std::string whole = bytes();
    writeBytes(scan, whole);
    EXPECT_EQ(failureOf(remove), "");
    EXPECT_LT(fs::file_size(scan), whole.size());
    EXPECT_EQ(judge("ls Batchs/B"), "P.TIF\n");
  }
}

TEST_F(OutputFileTest, AFullDiskLeavesTheFileAsItWas) {
  for (const Writer& append : appenders) {
    for (const int pages : {1, 100}) {  // with 100 pages a group of a PDF file is full
      writePages(append, pages);
      const std::string before = bytes();
      append();
      const std::uint64_t needed = fs::file_size(file);
      // From a limit in the old tail, where a PDF page begins, to the last byte of the new page.
      for (std::uint64_t limit = before.size() - 30; limit <= needed;
           limit += (needed - limit) / 9 + 1) {
        writeBytes(file, before);
        const std::string failure = (FullDisk(limit), failureOf(append));
        EXPECT_EQ(failure.empty(), limit == needed) << limit;
        EXPECT_TRUE(failure.empty() || bytes() == before) << limit;
      }
    }
  }
  for (const Writer& create : creators) {
    for (std::uint64_t limit = 0; limit < 1000; limit += 90) {
      EXPECT_NE((FullDisk(limit), failureOf(create)), "");
      EXPECT_FALSE(fs::exists(file)) << "a failed write leaves no file";
    }
  }
}

TEST_F(OutputFileTest, TheCostOfAnAppendDoesNotGrow) {
  for (const Writer& append : appenders) {
    std::map<std::string, std::int64_t> costs[2];
    writePages(append, 48);
    inputAndOutput();  // what a first look and a first append cost a sanitizer is not counted
    append();
    for (auto& cost : costs) {
      const auto before = inputAndOutput();
      append();
      for (const auto& [name, count] : inputAndOutput()) cost[name] = count - before.at(name);
      for (int i = 0; &cost == costs && i < 2999; ++i) append();
    }
    EXPECT_EQ(costs[1]["syscr:"], costs[0]["syscr:"]);
    EXPECT_EQ(costs[1]["syscw:"], costs[0]["syscw:"]);
    EXPECT_LE(costs[1]["rchar:"], costs[0]["rchar:"] + 20) << "the look itself takes some";
    EXPECT_LE(costs[1]["wchar:"], costs[0]["wchar:"] + 500) << "30 more groups in a page tree";
  }
}

}  // namespace
}  // namespace orvane::test
