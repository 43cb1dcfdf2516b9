#include "imaging/pdf/PdfFile.h"

#include <clocale>
#include <gmock/gmock.h>

#include "imaging/container_checks.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

using PageMaker = EncodedImage (*)(unsigned);

struct PdfFileTest : FileTest {
  void expectSound() const { EXPECT_THAT(judge("qpdf --check out"), Not(HasSubstr("WARN"))); }

  std::string write(const std::vector<EncodedImage>& pages) {
    PdfFile pdf;
    fs::remove(file);
    for (const EncodedImage& page : pages) pdf.append(path, page);
    return bytes();
  }
  std::string write(PageMaker page, unsigned count, unsigned without = 0) {
    std::vector<EncodedImage> pages;
    for (unsigned i = 1; i <= count; ++i) {
      if (i != without) pages.push_back(page(i));
    }
    return write(pages);
  }
  // The number of ICC profiles in the file, including that of the output intent.
  long profiles() const { return std::stol(judge("grep -ao acsp out | wc -l")); }
};

TEST_F(PdfFileTest, WhatPdfACannotHoldIsRefused) {
  const RasterForm gray{16, 1, ColourModel::MinIsBlack}, cmyk{8, 4, ColourModel::Cmyk},
      alpha{8, 4, ColourModel::Rgb, ExtraSample::UnassociatedAlpha};
  for (const RasterForm& form : {gray, cmyk, alpha}) {
    const EncodedImage page = encodeUncompressed(emptyRaster(form, 8, 8), SampleOrder::BigEndian);
    EXPECT_THAT(failureOf([&] { write({page}); }), HasSubstr("cannot hold"));
  }
  EncodedImage page = plainPage(1);
  page.compression = Compression::Lzw;
  EXPECT_THAT(failureOf([&] { write({page}); }), HasSubstr("cannot hold"));
  EXPECT_FALSE(fs::exists(file));
}

// JHOVE, by which archives judge, takes a break after the opening bracket for an error.
TEST_F(PdfFileTest, APaletteBeginsWithItsFirstDigit) {
  RasterForm form{8, 1, ColourModel::Palette};
  form.palette.assign(3 * 256, 0x7F00);
  const Raster colours = emptyRaster(form, 8, 8);
  write({encodeUncompressed(colours, SampleOrder::BigEndian)});
  EXPECT_EQ(judge("grep -ac '/Indexed /DeviceRGB 255 <[0-9A-F]' out"), "1\n");
  expectSound();
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

TEST_F(PdfFileTest, AnAppendIsTheSameRememberedOrReadBack) {
  PdfFile remembering;
  for (const PageMaker page : {plainPage, profiledPage}) {
    judge("rm -f out other");
    for (unsigned i = 0; i < 302; ++i) {
      remembering.append(path, page(i));
      PdfFile().append(station.path(L"other"), page(i));
      if (i % 100 > 1) continue;
      SCOPED_TRACE(i);
      expectSound();
      EXPECT_EQ(judge("cmp other out && qpdf --show-npages out"), std::to_string(i + 1) + "\n");
      EXPECT_EQ(PdfFile::pageCount(path), static_cast<int>(i) + 1);
    }
    EXPECT_EQ(profiles(), page == plainPage ? 1 : 5);
  }
  EXPECT_EQ(judge("pdfimages -l 9 -list out | grep -c icc"), "6\n");
  PdfFile().create(path, plainPage(7));  // a new file of the same name
  remembering.append(path, plainPage(8));
  EXPECT_EQ(PdfFile::pageCount(path), 2);
}

TEST_F(PdfFileTest, DeletingGivesTheFileThatNeverHadThePage) {
  for (const PageMaker maker : {plainPage, profiledPage}) {
    for (const unsigned count : {3U, 101U, 202U}) {
      for (const unsigned page : {2U, 80U, count / 2 + 1, count}) {
        if (page > count) continue;
        const std::string expected = write(maker, count, page);
        write(maker, count);
        fs::permissions(file, fs::perms(0640));
        PdfFile::deletePage(path, static_cast<std::int32_t>(page));
        EXPECT_EQ(bytes(), expected) << count << " " << page;
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
      }
    }
    expectSound();
  }
  PdfFile::deletePage(path, 1);  // the identifier depends on it, and it brings a profile
  expectSound();
  EXPECT_EQ(profiles(), 4);
  write(profiledPage, 202);
  for (const std::int32_t page : {-1, 0, 203}) {
    EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, page); }), HasSubstr("no page"));
  }
  write(plainPage, 1);
  EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), HasSubstr("the only page"));
}

TEST_F(PdfFileTest, PagesAreAppendedToWhatThisProgramWroteOnly) {
  const std::string good = write(profiledPage, 102);
  std::string brokenProfile = good;
  brokenProfile.replace(good.rfind("/N 1 /Alt"), 4, "/N 3");
  judge("qpdf out foreign");
  for (const std::string& content :
       {std::string(), std::string("a text"), good.substr(0, 3000), good + "\n",
        readBytes(station.native("foreign")), brokenProfile}) {
    writeBytes(file, content);
    EXPECT_THAT(failureOf([&] { PdfFile().append(path, plainPage(1)); }),
                HasSubstr("not a PDF file that this program wrote"));
    EXPECT_EQ(bytes(), content);
    EXPECT_EQ(PdfFile::isPdf(path), content.starts_with("%PDF"));
  }
}

TEST_F(PdfFileTest, PagesOfOtherProgramsFilesAreCountedAndRemoved) {
  judge(
      "convert -size 90x70 -depth 8 gradient:navy-orange -density 72 -compress None 1.tif && "
      "convert 1.tif -negate 2.tif && convert 1.tif -rotate 180 3.tif && "
      "tiffcp [123].tif all.tif && tiff2pdf -z -o plain all.tif && printf '\\n' >>plain && "
      "qpdf --object-streams=generate plain streams && qpdf --linearize plain linearized && "
      "qpdf --encrypt '' owner 256 -- plain encrypted");
  for (const char* name : {"plain", "streams", "linearized", "encrypted"}) {
    SCOPED_TRACE(name);
    for (const int page : {1, 3}) {
      judge("cp " + std::string(name) + " out && chmod 640 out && rm -f *.ppm");
      EXPECT_EQ(PdfFile::pageCount(path), 3);
      PdfFile::deletePage(path, page);
      EXPECT_EQ(PdfFile::pageCount(path), 2);
      expectSound();
      judge("pdftoppm -r 72 " + std::string(name) +
            " old && pdftoppm -r 72 out new && "
            "cmp old-2.ppm new-" +
            (page == 1 ? "1" : "2") + ".ppm && cmp old-" +
            (page == 1 ? "3.ppm new-2" : "1.ppm new-1") + ".ppm");
      EXPECT_LT(fs::file_size(file), fs::file_size(station.native(name)) * 5 / 6);
      EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    }
  }
}

TEST_F(PdfFileTest, FilesThatCannotBeChangedAreRefused) {
  // Two pages, a bookmark on the second one, and perhaps a form.
  const auto written = [&](const std::string& form, const std::string& options = {}) {
    std::string text =
        "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R /Outlines 6 0 R " + form +
        " >>\nendobj\n2 0 obj\n<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 /MediaBox "
        "[0 0 9 9] >>\nendobj\n3 0 obj\n<< /Type /Page /Parent 2 0 R >>\nendobj\n4 0 obj\n<< "
        "/Type /Page /Parent 2 0 R /Contents 5 0 R >>\nendobj\n5 0 obj\n<< /Length 8 >>\nstream\n"
        "% secret\nendstream\nendobj\n6 0 obj\n<< /First 7 0 R /Last 7 0 R >>\nendobj\n7 0 obj\n"
        "<< /Title (a) /Parent 6 0 R /Dest [4 0 R /Fit] >>\nendobj\ntrailer\n"
        "<< /Root 1 0 R /Size 8 >>\n%%EOF\n";
    station.write("raw", text);
    judge("qpdf --no-warn --warning-exit-0 --stream-data=preserve " + options + " raw out");
    return bytes();
  };
  const std::string good = written("");
  const std::pair<std::string, std::string> cases[] = {
      {written("/AcroForm << /Fields [] /SigFlags 1 >>"), "is signed"},
      {written("", "--encrypt '' owner 256 --assemble=n --modify=none --"), "forbids"},
      {written("", "--encrypt user owner 256 --"), "needs a password"},
      {readBytes(station.native("raw")), "is damaged"},
      {good.substr(0, 300), "is damaged"},
      {"a text", "is damaged"},
      {"", "is damaged"},
  };
  for (const auto& [content, reason] : cases) {
    writeBytes(file, content);
    EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), HasSubstr(reason));
    const bool isReadable = reason == "is signed" || reason == "forbids";
    EXPECT_EQ(failureOf([&] { PdfFile::pageCount(path); }).empty(), isReadable) << reason;
    EXPECT_EQ(bytes(), content);
  }
  writeBytes(file, good);
  EXPECT_THAT(bytes(), HasSubstr("% secret"));
  EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 3); }), HasSubstr("no page"));
  PdfFile::deletePage(path, 2);  // although the bookmark refers to it
  expectSound();
  EXPECT_THAT(bytes(), Not(HasSubstr("% secret")));
  EXPECT_THAT(failureOf([&] { PdfFile::deletePage(path, 1); }), HasSubstr("the only page"));
}

}  // namespace
}  // namespace orvane::test
