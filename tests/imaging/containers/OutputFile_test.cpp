#include "imaging/containers/OutputFile.h"

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "imaging/containers/JpegFile.h"
#include "imaging/containers/PdfFile.h"
#include "imaging/containers/TiffFile.h"
#include "imaging/containers/container_checks.h"
#include "imaging/containers/sample_pages.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;
using Writer = std::function<void(const std::wstring&)>;

struct OutputFileTest : testing::Test {
  TempStation station;
  EncodedImage jpeg = makeDocuments(station.native()).back().pages[0];
  TiffFile tiff;
  PdfFile pdf;
  std::vector<Writer> creators{
      [this](const std::wstring& path) { TiffFile().create(path, jpeg); },
      [this](const std::wstring& path) { PdfFile().create(path, jpeg); },
      [this](const std::wstring& path) { writeJpegFile(path, jpeg); },
  };
  std::vector<Writer> appenders{
      [this](const std::wstring& path) { tiff.append(path, jpeg); },
      [this](const std::wstring& path) { pdf.append(path, jpeg); },
  };
};

TEST_F(OutputFileTest, ANewFileNeverGoesIntoAnotherOne) {
  const fs::path other = station.native("other");
  const fs::path target = station.native("target");
  const std::vector<std::function<void()>> links{
      [&] { fs::create_hard_link(other, target); },
      [&] { fs::create_symlink(other, target); },
  };
  for (const Writer& create : creators) {
    for (const auto& link : links) {
      writeBytes(other, "another file");
      fs::remove(target);
      link();
      create(station.path(L"target"));
      EXPECT_EQ(readBytes(other), "another file");
      EXPECT_FALSE(fs::is_symlink(target));
      EXPECT_GT(fs::file_size(target), 100);
    }
  }
}

TEST_F(OutputFileTest, ATargetThatIsNoFileOfItsOwnIsRefused) {
  struct Case {
    std::string reason;
    std::function<void(const fs::path&)> make;
  };
  const fs::path other = station.native("other");
  const std::vector<Case> cases{
      {"the name is a symbolic link", [&](const fs::path& p) { fs::create_symlink(other, p); }},
      {"second hard link", [&](const fs::path& p) { fs::create_hard_link(other, p); }},
      {"Is a directory", [](const fs::path& p) { fs::create_directory(p); }},
      {"not a regular file", [](const fs::path& p) { mkfifo(p.c_str(), 0600); }},
  };
  for (const Writer& append : appenders) {
    fs::remove(other);
    append(station.path(L"other"));
    const std::string before = readBytes(other);
    for (const auto& [reason, make] : cases) {
      make(station.native("target"));
      const std::string failure = failureOf([&] { append(station.path(L"target")); });
      EXPECT_THAT(failure, HasSubstr("target: "));
      EXPECT_THAT(failure, HasSubstr(reason));
      EXPECT_EQ(readBytes(other), before);
      fs::remove(station.native("target"));
    }
  }
  for (const Writer& create : creators) {
    EXPECT_THAT(failureOf([&] { create(station.path(L"none\\target")); }),
                HasSubstr("No such file or directory"));
    fs::create_directory(station.native("folder"));
    EXPECT_THAT(failureOf([&] { create(station.path(L"folder")); }), HasSubstr("Is a directory"));
  }
}

TEST_F(OutputFileTest, AFullDiskLeavesTheFileAsItWas) {
  const fs::path file = station.native("full");
  const std::wstring path = station.path(L"full");
  for (const Writer& append : appenders) {
    for (const int pages : {1, 100}) {  // with 100 pages a group of a PDF file is full
      fs::remove(file);
      for (int i = 0; i < pages; ++i) append(path);
      const std::string before = readBytes(file);
      append(path);
      const std::uint64_t needed = fs::file_size(file);
      // From a limit in the old tail, where a PDF page begins, to the last byte of the new page.
      for (std::uint64_t limit = before.size() - 30; limit <= needed;
           limit += (needed - limit) / 9 + 1) {
        writeBytes(file, before);
        const bool done = succeedsUnderSizeLimit(limit, [&] { append(path); });
        EXPECT_EQ(done, limit == needed) << limit;
        EXPECT_TRUE(done || readBytes(file) == before) << limit;
      }
    }
  }
  for (const Writer& create : creators) {
    for (std::uint64_t limit = 0; limit < 1000; limit += 90) {
      EXPECT_FALSE(succeedsUnderSizeLimit(limit, [&] { create(path); }));
      EXPECT_FALSE(fs::exists(file)) << "a failed write leaves no file";
    }
  }
}

TEST_F(OutputFileTest, TheCostOfAnAppendDoesNotGrow) {
  for (const Writer& append : appenders) {
    const std::wstring path = station.path(L"growing");
    fs::remove(station.native("growing"));
    std::map<std::string, std::int64_t> early;
    for (int i = 0; i < 3050; ++i) {
      auto work = inputAndOutputOf([&] { append(path); });
      if (i == 49) early = work;
      if (i != 3049) continue;
      for (const char* count : {"rchar:", "syscr:", "syscw:"}) EXPECT_EQ(work[count], early[count]);
      EXPECT_LE(work["wchar:"], early["wchar:"] + 500) << "30 more groups in a page tree";
    }
  }
}

TEST_F(OutputFileTest, DamagedFilesNeitherCrashNorGrow) {
  struct Case {
    Writer append;
    void (*deletePage)(const std::wstring&, std::int32_t);
    int pages;
  };
  const fs::path file = station.native("damaged");
  const std::wstring path = station.path(L"damaged");
  for (const auto& [append, deletePage, pages] : {Case{appenders[0], TiffFile::deletePage, 3},
                                                  Case{appenders[1], PdfFile::deletePage, 102}}) {
    fs::remove(file);
    for (int i = 0; i < pages; ++i) append(path);
    const std::string good = readBytes(file);
    withDamagedCopies(file, good, 150, [&, &add = append, &remove = deletePage] {
      const std::string before = readBytes(file);
      const bool removed = failureOf([&] { remove(path, 2); }).empty();
      const std::string shorter = readBytes(file);
      EXPECT_TRUE(removed ? shorter.size() < before.size() : shorter == before);
      const bool added = failureOf([&] { add(path); }).empty();
      EXPECT_TRUE(added || readBytes(file) == shorter);
    });
  }
}

TEST_F(OutputFileTest, AJpegFileHoldsTheStreamAndNothingElse) {
  const std::wstring path = station.path(L"page.jpg");
  writeJpegFile(path, jpeg);
  EXPECT_EQ(readBytes(station.native("page.jpg")), readBytes(station.native("jpeg colour.jpg")));
  EXPECT_NE(failureOf([&] { writeJpegFile(path, plainPage(0)); }), "");
}

}  // namespace
}  // namespace orvane::test
