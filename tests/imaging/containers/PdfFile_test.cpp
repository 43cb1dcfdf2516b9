#include "imaging/containers/PdfFile.h"

#include <clocale>
#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "imaging/containers/container_checks.h"
#include "imaging/containers/sample_pages.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

struct PdfFileTest : testing::Test {
  TempStation station;
  fs::path file = station.native("out.pdf");
  std::wstring path = station.path(L"out.pdf");

  std::string bytes() const { return readBytes(file); }

  void write(const std::vector<EncodedImage>& pages) {
    PdfFile pdf;
    pdf.create(path, pages[0]);
    for (std::size_t i = 1; i < pages.size(); ++i) pdf.append(path, pages[i]);
  }

  void expectSound() const {
    const CommandResult result = runCommand("qpdf --check " + quoted(file));
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, Not(HasSubstr("WARNING")));
  }

  // The pages of the file, drawn at their own resolution, show the pages of the picture file.
  void expectSamePixels(const SampleDocument& document) const {
    const fs::path stem = station.native("drawn");
    outputOf("pdftoppm -r 200 " + quoted(file) + " " + quoted(stem));
    for (std::size_t i = 0; i < document.pages.size(); ++i) {
      const std::string number = std::to_string(i + 1);
      EXPECT_EQ(
          runCommand("compare -metric AE " + quoted(stem.string() + "-" + number + ".ppm") + " " +
                     quoted(document.reference.string() + "[" + std::to_string(i) + "]") + " null:")
              .output,
          "0");
    }
  }
};

const std::vector<std::string> kNotForPdf{"group4 strips", "gray16", "rgb8 lzw", "rgba8", "cmyk8"};

TEST_F(PdfFileTest, OutsideReadersSeeThePagesOfEveryKind) {
  for (SampleDocument& document : makeDocuments(station.native())) {
    SCOPED_TRACE(document.name);
    if (testing::Value(document.name, testing::AnyOfArray(kNotForPdf))) continue;
    for (EncodedImage& page : document.pages) page.resolution = {200, 200};
    write(document.pages);
    const std::string first = bytes();
    expectSound();
    expectSamePixels(document);
    if (document.name.starts_with("jpeg")) {
      outputOf("pdfimages -all " + quoted(file) + " " + quoted(station.native("taken")));
      EXPECT_EQ(readBytes(station.native("taken-000.jpg")), readBytes(document.reference));
    }
    write(document.pages);
    EXPECT_EQ(bytes(), first) << "the same pages give the same bytes";
  }
}

TEST_F(PdfFileTest, WhatPdfACannotHoldIsRefused) {
  for (const SampleDocument& document : makeDocuments(station.native())) {
    if (!testing::Value(document.name, testing::AnyOfArray(kNotForPdf))) continue;
    EXPECT_THAT(failureOf([&] { write(document.pages); }), HasSubstr("cannot hold"))
        << document.name;
    EXPECT_FALSE(fs::exists(file));
  }
}

TEST_F(PdfFileTest, AStreamWithoutEndOfBlockIsReadByItsRows) {
  TempStation folder;
  SampleDocument document = makeDocuments(folder.native()).front();
  document.pages.resize(1);
  document.pages[0].resolution = {200, 200};
  Bytes& stream = document.pages[0].strips[0];
  stream.resize(stream.size() - 3);  // the last bits of the rows stay, the code is cut
  write(document.pages);
  EXPECT_THAT(bytes(), HasSubstr("/EndOfBlock false"));
  expectSamePixels(document);
}

TEST_F(PdfFileTest, ThePageSizeIsPixelsByResolution) {
  struct Case {
    double x;
    double y;
    std::string size;
  };
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  for (const auto& [x, y, size] : std::vector<Case>{{72, 72, "24 5"},
                                                    {300, 200, "5.76 1.8"},
                                                    {203.2, 96, "8.5039 3.75"},
                                                    {0.12, 72, "14400 5"}}) {
    EncodedImage page = plainPage(0);
    page.resolution = {x, y};
    PdfFile().create(path, page);
    EXPECT_THAT(bytes(), HasSubstr("/MediaBox [ 0 0 " + size + " ]"));
    expectSound();
  }
  std::setlocale(LC_ALL, "C");
  EncodedImage page = plainPage(0);
  page.resolution = {0.119, 72};
  EXPECT_THAT(failureOf([&] { PdfFile().append(path, page); }), HasSubstr("14400"));
  EXPECT_EQ(PdfFile::pageCount(path), 1);
}

TEST_F(PdfFileTest, ItIsAnArchiveFile) {
  std::string classPath;
  for (const std::string jar : {"preflight", "xmpbox", "pdfbox2", "fontbox2", "commons-logging",
                                "javax.activation", "jaxb-api"}) {
    const fs::path library = "/usr/share/java/" + jar + ".jar";
    if (!fs::exists(library)) GTEST_SKIP() << library << " is not installed";
    classPath += library.string() + ":";
  }
  if (runCommand("java -version").exitCode != 0) GTEST_SKIP() << "no Java runtime";
  const fs::path folder = station.native("archive");
  fs::create_directory(folder);
  for (const SampleDocument& document : makeDocuments(station.native())) {
    if (testing::Value(document.name, testing::AnyOfArray(kNotForPdf))) continue;
    write(document.pages);
    fs::copy_file(file, folder / (document.name + ".pdf"));
  }
  PdfFile pdf;
  for (unsigned i = 0; i < 201; ++i) pdf.append(station.path(L"archive\\long.pdf"), plainPage(i));
  outputOf("java -cp " + quoted(fs::path(classPath)) +
           " org.apache.pdfbox.preflight.Validator_A1b xml batch " + quoted(folder));
  int judged = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() != ".xml") continue;
    EXPECT_THAT(readBytes(entry.path()), HasSubstr("<isValid type=\"PDF/A1-b\">true</isValid>"));
    ++judged;
  }
  EXPECT_EQ(judged, 12);
}

TEST_F(PdfFileTest, AnAppendIsTheSameRememberedOrReadBack) {
  PdfFile remembering;
  const std::wstring other = station.path(L"other.pdf");
  for (unsigned i = 0; i < 302; ++i) {
    remembering.append(path, plainPage(i));
    PdfFile().append(other, plainPage(i));
    if (i % 100 > 1) continue;
    SCOPED_TRACE(i);
    ASSERT_EQ(readBytes(station.native("other.pdf")), bytes());
    EXPECT_EQ(PdfFile::pageCount(path), static_cast<int>(i) + 1);
    expectSound();
    EXPECT_EQ(outputOf("qpdf --show-npages " + quoted(file)), std::to_string(i + 1) + "\n");
  }
  PdfFile().create(path, plainPage(7));  // another file under the old name
  remembering.append(path, plainPage(8));
  EXPECT_EQ(PdfFile::pageCount(path), 2);
}

TEST_F(PdfFileTest, DeletingGivesTheFileThatNeverHadThePage) {
  PdfFile pdf;
  for (const unsigned count : {3U, 101U, 202U}) {
    for (const unsigned page : {2U, count / 2 + 1, count}) {
      SCOPED_TRACE(std::to_string(count) + " " + std::to_string(page));
      fs::remove(file);
      for (unsigned i = 1; i <= count; ++i) {
        if (i != page) pdf.append(path, plainPage(i));
      }
      const std::string expected = bytes();
      fs::remove(file);
      for (unsigned i = 1; i <= count; ++i) pdf.append(path, plainPage(i));
      fs::permissions(file, fs::perms(0640));
      PdfFile::deletePage(path, static_cast<std::int32_t>(page));
      EXPECT_EQ(bytes(), expected);
      EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    }
  }
  PdfFile::deletePage(path, 1);
  expectSound();
  EXPECT_EQ(PdfFile::pageCount(path), 200);
  for (const std::int32_t page : {-1, 0, 201}) {
    EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, page); }), HasSubstr("no page"));
  }
  PdfFile().create(path, plainPage(0));
  EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), HasSubstr("the only page"));
}

TEST_F(PdfFileTest, OnlyWhatThisProgramWroteIsTouched) {
  PdfFile pdf;
  for (unsigned i = 0; i < 102; ++i) pdf.append(path, plainPage(i));
  const std::string good = bytes();
  outputOf("qpdf " + quoted(file) + " " + quoted(station.native("foreign.pdf")));
  for (const std::string& content : {std::string(), std::string("a text"), good.substr(0, 3000),
                                     good + "\n", readBytes(station.native("foreign.pdf"))}) {
    writeBytes(file, content);
    const std::string text = "not a PDF file that this program wrote";
    EXPECT_THAT(failureOf([&] { PdfFile().append(path, plainPage(1)); }), HasSubstr(text));
    EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), HasSubstr(text));
    EXPECT_THAT(failureOf([&] { PdfFile::pageCount(path); }), HasSubstr(text));
    EXPECT_EQ(bytes(), content);
    EXPECT_EQ(PdfFile::isPdf(path), content.starts_with("%PDF"));
  }
  EXPECT_FALSE(PdfFile::isPdf(station.path(L"none")));
}

}  // namespace
}  // namespace orvane::test
