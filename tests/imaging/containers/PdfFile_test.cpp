#include "imaging/containers/PdfFile.h"

#include <clocale>
#include <gmock/gmock.h>

#include "imaging/containers/container_checks.h"
#include "imaging/containers/sample_pages.h"
#include "imaging/differingPixels.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

struct PdfFileTest : FileTest {
  void expectSound() const { EXPECT_THAT(judge("qpdf --check out"), Not(HasSubstr("WARN"))); }

  std::string write(const std::vector<EncodedImage>& pages) {
    PdfFile pdf;
    fs::remove(file);
    for (const EncodedImage& page : pages) pdf.append(path, page);
    return bytes();
  }
  std::string writePlain(unsigned count, unsigned without = 0) {
    std::vector<EncodedImage> pages;
    for (unsigned i = 1; i <= count; ++i) {
      if (i != without) pages.push_back(plainPage(i));
    }
    return write(pages);
  }

  // The pages, drawn at their own resolution, show those of the reference.
  void expectShows(const SampleDocument& document) const {
    judge("pdftoppm -r 200 out drawn");
    for (std::size_t i = 0; i < document.pages.size(); ++i) {
      const fs::path drawn = station.native("drawn-" + std::to_string(i + 1) + ".ppm");
      const std::string page = document.reference.string() + "[" + std::to_string(i) + "]";
      EXPECT_EQ(differingPixels(quoted(drawn), quoted(page)), "0");
    }
  }
};

TEST_F(PdfFileTest, OutsideReadersSeeThePagesOfEveryKindThatPdfACanHold) {
  for (const SampleDocument& document : makeDocuments(station.native())) {
    SCOPED_TRACE(document.name);
    if (!document.fitsPdf) {
      EXPECT_THAT(failureOf([&] { write(document.pages); }), HasSubstr("cannot hold"));
      EXPECT_FALSE(fs::exists(file));
      continue;
    }
    const std::string first = write(document.pages);
    expectSound();
    expectShows(document);
    if (document.name.starts_with("jpeg")) {
      judge("pdfimages -all out taken && cmp taken-000.jpg " + quoted(document.reference));
    }
    EXPECT_EQ(write(document.pages), first) << "the same pages give the same bytes";
  }
}

TEST_F(PdfFileTest, ThePageSizeIsPixelsByResolution) {
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EncodedImage page = plainPage(0);
  for (const auto& [x, y, size] : {std::tuple{72.0, 72.0, "24 5"},
                                   {300, 200, "5.76 1.8"},
                                   {203.2, 96, "8.5039 3.75"},
                                   {0.12, 72, "14400 5"}}) {
    page.resolution = {x, y};
    EXPECT_THAT(write({page}), HasSubstr("/MediaBox [ 0 0 " + std::string(size) + " ]"));
    expectSound();
  }
  std::setlocale(LC_ALL, "C");
  page.resolution = {0.119, 72};
  EXPECT_THAT(failureOf([&] { PdfFile().append(path, page); }), HasSubstr("14400"));
  EXPECT_EQ(PdfFile::pageCount(path), 1);
}

TEST_F(PdfFileTest, ItIsAnArchiveFile) {
  std::string classPath;
  for (const std::string jar : {"preflight", "xmpbox", "pdfbox2", "fontbox2", "commons-logging",
                                "javax.activation", "jaxb-api"}) {
    const std::string library = "/usr/share/java/" + jar + ".jar";
    if (!fs::exists(library)) GTEST_SKIP() << library << " is not installed";
    classPath += library + ":";
  }
  if (runCommand("java -version").exitCode != 0) GTEST_SKIP() << "no Java runtime";
  fs::create_directory(station.native("archive"));
  for (const SampleDocument& document : makeDocuments(station.native())) {
    if (!document.fitsPdf) continue;
    write(document.pages);
    fs::rename(file, station.native("archive/" + document.name + ".pdf"));
  }
  writePlain(201);
  fs::rename(file, station.native("archive/long.pdf"));
  EXPECT_EQ(
      judge("java -cp " + classPath + " org.apache.pdfbox.preflight.Validator_A1b xml batch " +
            "archive >log && cat archive/*.xml | grep -c 'PDF/A1-b\">true</isValid>'"),
      "11\n");
}

TEST_F(PdfFileTest, AnAppendIsTheSameRememberedOrReadBack) {
  PdfFile remembering;
  for (unsigned i = 0; i < 302; ++i) {
    remembering.append(path, plainPage(i));
    PdfFile().append(station.path(L"other"), plainPage(i));
    if (i % 100 > 1) continue;
    SCOPED_TRACE(i);
    expectSound();
    EXPECT_EQ(judge("cmp other out && qpdf --show-npages out"), std::to_string(i + 1) + "\n");
    EXPECT_EQ(PdfFile::pageCount(path), static_cast<int>(i) + 1);
  }
  PdfFile().create(path, plainPage(7));  // another file under the old name
  remembering.append(path, plainPage(8));
  EXPECT_EQ(PdfFile::pageCount(path), 2);
}

TEST_F(PdfFileTest, DeletingGivesTheFileThatNeverHadThePage) {
  for (const unsigned count : {3U, 101U, 202U}) {
    for (const unsigned page : {2U, count / 2 + 1, count}) {
      const std::string expected = writePlain(count, page);
      writePlain(count);
      fs::permissions(file, fs::perms(0640));
      PdfFile::deletePage(path, static_cast<std::int32_t>(page));
      EXPECT_EQ(bytes(), expected) << count << " " << page;
      EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    }
  }
  expectSound();
  for (const std::int32_t page : {-1, 0, 202}) {
    EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, page); }), HasSubstr("no page"));
  }
  writePlain(1);
  EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), HasSubstr("the only page"));
}

TEST_F(PdfFileTest, OnlyWhatThisProgramWroteIsTouched) {
  const std::string good = writePlain(102);
  judge("qpdf out foreign");
  for (const std::string& content : {std::string(), std::string("a text"), good.substr(0, 3000),
                                     good + "\n", readBytes(station.native("foreign"))}) {
    writeBytes(file, content);
    const auto told = HasSubstr("not a PDF file that this program wrote");
    EXPECT_THAT(failureOf([&] { PdfFile().append(path, plainPage(1)); }), told);
    EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), told);
    EXPECT_THAT(failureOf([&] { PdfFile::pageCount(path); }), told);
    EXPECT_EQ(bytes(), content);
    EXPECT_EQ(PdfFile::isPdf(path), content.starts_with("%PDF"));
  }
}

}  // namespace
}  // namespace orvane::test
