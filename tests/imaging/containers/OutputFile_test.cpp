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
  std::vector<Writer> creators{
      [this](const std::wstring& path) { TiffFile().create(path, jpeg); },
      [this](const std::wstring& path) { PdfFile().create(path, jpeg); },
      [this](const std::wstring& path) { writeJpegFile(path, jpeg); },
  };
  std::vector<Writer> appenders{
      [this](const std::wstring& path) { TiffFile().append(path, jpeg); },
      [this](const std::wstring& path) { PdfFile().append(path, jpeg); },
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

TEST_F(OutputFileTest, AJpegFileHoldsTheStreamAndNothingElse) {
  const std::wstring path = station.path(L"page.jpg");
  writeJpegFile(path, jpeg);
  EXPECT_EQ(readBytes(station.native("page.jpg")), readBytes(station.native("jpeg colour.jpg")));
  EXPECT_NE(failureOf([&] { writeJpegFile(path, plainPage(0)); }), "");
  const auto write = [&] { writeJpegFile(station.path(L"full.jpg"), jpeg); };
  EXPECT_FALSE(succeedsUnderSizeLimit(100, write));
  EXPECT_FALSE(fs::exists(station.native("full.jpg")));
}

}  // namespace
}  // namespace orvane::test
