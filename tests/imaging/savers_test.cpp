// What the operations of a host ask of its instances, call by call, and what they tell of a
// failure.

#include "imaging/DocumentConversion.h"
#include "imaging/HostFixture.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlImageProcess.h"

namespace orvane::test {
namespace {

using Conversion = DocumentConversion;

struct Savers : HostFixture {
  DocumentConversion conversion{instances, list};
};

// A saver of page 3, and its calls: "T" stands for the target, "*" for the codes of the page.
struct Saver {
  std::function<bool(ImagingEngine&, const std::wstring& target, bool compress, short ratios)> save;
  std::string calls, failure;
};

const std::wstring kIn = L"\\in.tif";
const std::string kLoad = "SaveMultiPage 1; PageNumber 3; SourceFile \\in.tif; TargetFile T; ";
const Saver kSavers[] = {
    {[](auto& engine, auto& target, bool compress, short ratios) {
       return mdlImageProcess::SaveImage(engine, kIn, 3, target, compress, ratios, true);
     },
     kLoad + "*; SaveFile; " + kClear,
     "Orvane成果导出:mdlImageProcess-SaveImage-broken ImgControl.ImagError =0\n"},
    {[](auto& engine, auto& target, bool compress, short ratios) {
       return mdlImageProcess::SavePDF(engine, kIn, 3, target, compress, ratios, true);
     },
     kLoad + "*; SaveFile; " + kClear,
     "Orvane成果导出:mdlImageProcess-SavePDF-broken ImgControl.ImagError =0\n"},
    {[](auto& engine, auto& target, bool compress, short) {
       return mdlImageProcess::SaveImageEx(engine, target, compress, true);
     },
     "TargetFile T; SaveMultiPage 1; *; SaveFile",
     "Orvane成果导出:mdlImageProcess-SaveImageEx2-broken\n"},
    {[](auto& engine, auto& target, bool compress, short) {
       Conversion::SaveImage(engine, kIn, 3, target, compress, true);
       return engine.SourceFile() == kIn;
     },
     kLoad + "*; SaveFile", "SaveImage:broken\n"},
    {[](auto& engine, auto& target, bool compress, short) {
       Conversion::SavePDF(engine, kIn, 3, target, compress, true);
       return engine.SourceFile() == kIn;
     },
     kLoad + "ResolutionX 200; ResolutionY 200; *; SaveFile", "SavePDF:broken\n"}};

TEST_F(Savers, WriteTheCodesOfThePageInTheirOrder) {
  enum { Image, Pdf, Again, ConvertedImage, ConvertedPdf };
  const std::string depth = "BitsPerPixel; ", jpeg = "TiffCompression 6";
  const std::string g4 = depth + "OutputType 15; TiffCompression 3";
  const std::string coloured = depth + "OutputType 18; " + jpeg;
  const std::string pdf = "OutputType 40; " + depth + "PdfCompression ";
  const std::string plain = "; OutputType 4; TiffCompression 0";
  const struct {
    int saver;
    std::int16_t bits;
    std::wstring name;
    bool compress;
    std::int16_t ratios;
    std::string codes;
  } rows[] = {
      {Image, 1, L"a.jpg", true, 2, g4},
      {Image, 2, L"a.tif", true, 0, coloured + "; Major 20; Minor 16"},
      {Image, 24, L"a.jpeg", true, 1, coloured + "; Major 40; Minor 32"},
      {Image, 24, L"a.Jpg", true, 2, depth + "OutputType 8; " + jpeg + "; Major 60; Minor 48"},
      {Image, 8, L"a.JPG", true, 3, depth + "OutputType 8; " + jpeg},
      {Image, 24, L"a.jpg", false, 0, "OutputType 4; TiffCompression 4"},
      {Pdf, 1, L"a.pdf", true, 1, pdf + "4"},
      {Pdf, 8, L"a.jpg", true, 1, pdf + "6; Major 40; Minor 32"},
      {Pdf, 24, L"a.pdf", false, -1, pdf + "6; PdfCompression 0"},
      {Pdf, 1, L"a.pdf", false, 0, pdf + "4; PdfCompression 0"},
      {Again, 8, L"a.tif", true, 0, coloured},
      {Again, 1, L"a.tif", false, 0, g4 + plain},
      {ConvertedImage, 1, L"a.tif", true, 0, g4},
      {ConvertedImage, 24, L"a.jpg", false, 0, coloured + plain},
      {ConvertedPdf, 1, L"a.pdf", true, 0, pdf + "4"},
      {ConvertedPdf, 2, L"a.pdf", false, 0, pdf + "6; PdfCompression 0"},
  };
  for (const auto& [saver, bits, name, compress, ratios, codes] : rows) {
    control.bitsPerPixel = bits;
    const std::wstring target = station.path(L"out\\sub\\" + name);
    EXPECT_TRUE(kSavers[saver].save(control, target, compress, ratios));
    std::string calls = kSavers[saver].calls;
    calls.replace(calls.find('*'), 1, codes).replace(calls.find("T;"), 1, toUtf8(target));
    EXPECT_EQ(control.takeCalls(), calls);
  }
  EXPECT_TRUE(std::filesystem::is_directory(station.native("out/sub")));
  EXPECT_EQ(window.yields, 12) << "none in a conversion";
  // An empty target saves over the source, whatever its name: as TIFF.
  control.bitsPerPixel = 1;
  EXPECT_TRUE(mdlImageProcess::SaveImage(control, L"\\in.jpg", 3, L"", true, 3, true));
  EXPECT_NE(control.takeCalls().find("TargetFile \\in.jpg; " + depth + "OutputType 15"),
            std::string::npos);
  EXPECT_EQ(station.takeLog(), "");
}

TEST_F(Savers, ARaisedFailureIsLoggedAndAStaleErrorCleared) {
  for (const Saver& saver : kSavers) {
    for (const char* step : {"TargetFile", "OutputType", "SaveFile"}) {
      control.throwsAt = step;
      const bool isConversion = saver.failure.starts_with("Save");
      EXPECT_EQ(saver.save(control, station.path(L"a.tif"), true, 0), isConversion);
      EXPECT_EQ(station.takeLog(), saver.failure);
      const bool cleared = saver.calls.ends_with(kClear);
      EXPECT_EQ(control.takeCalls().ends_with("; SaveMultiPage 0; " + kClear), cleared);
    }
    control.throwsAt.clear();
    for (const std::int32_t afterSave : {0, 9}) {
      control.imagError = 5;
      control.imagErrorAfterSave = afterSave;
      const bool counts = saver.calls.ends_with(kClear) && afterSave != 0;
      EXPECT_NE(saver.save(control, station.path(L"a.tif"), true, 0), counts);
      EXPECT_EQ(control.takeCalls().starts_with("SaveMultiPage 0; " + kClear + "; SaveMultiPage 1"),
                saver.calls.ends_with(kClear));
    }
  }
}

TEST_F(Savers, PagesAreCountedBySecondInstanceOnlyWhereTheFirstFindsOne) {
  const std::string question = "; FilePageCount \\in.tif";
  const struct {
    std::int32_t first, second, count;
    bool asked;
  } rows[] = {{3, 9, 3, false}, {0, 9, 0, false}, {1, 3, 3, true}, {40000, 9, 1, false}};
  for (const auto& [first, second, count, asked] : rows) {
    control.imagError = engines[1].imagError = 4;
    control.pageCounts = {first};
    engines[1].pageCounts = {second};
    EXPECT_EQ(mdlImageProcess::TifPagesCount(control, engines[1], kIn), count);
    EXPECT_EQ(control.takeCalls(), kClear + question);
    EXPECT_EQ(engines[1].takeCalls(), kClear + (asked ? question : ""));
  }
  EXPECT_EQ(station.takeLog().find("Orvane成果导出:mdlImageProcess-TifPagesCount Err:"), 0U);
}

TEST_F(Savers, ThePlaceholderInThePathBecomesTheExtension) {
  const std::pair<std::int16_t, std::wstring> rows[] = {
      {0, L"x.tifv\\b.tif"}, {1, L"x.jpgv\\b.jpg"}, {2, L"x.pdfv\\b.pdf"}, {3, L"x.tsv\\b.ts"}};
  for (const auto& [type, placed] : rows) {
    EXPECT_TRUE(conversion.SaveAsDocument(kIn, type, 0, station.path(L"x.tsv\\b.ts")));
    const std::string calls = control.takeCalls();
    EXPECT_NE(calls.find("TargetFile " + toUtf8(station.path(placed)) + ";"), calls.npos);
    EXPECT_TRUE(calls.ends_with(type == 0 ? "TiffCompression 3; SaveFile; SourceFile"
                                          : "PdfCompression 4; SaveFile; SourceFile"));
  }
}

// A list that fails stands for a raised failure in a conversion's own steps.
struct BrokenList : RecordingList {
  void addItem(std::wstring_view) override { throw Failure("broken"); }
};

TEST_F(Savers, AFailedConversionIsToldInTheListOrLoggedAndThePointerGivenBack) {
  writeBytes(station.native("file"), "x");  // no folder can be made in its place
  const std::wstring target = station.path(L"file\\o\\b");
  BrokenList brokenList;
  DocumentConversion broken(instances, brokenList);
  for (DocumentConversion* convert : {&conversion, &broken}) {
    EXPECT_FALSE(convert->ChangeToDocPDF(kIn, target, L"", 2, 0));
    EXPECT_FALSE(convert->ChangeToPagePDF(kIn, target, L"", 2, 0));
  }
  const std::wstring told = L"转换PDF:\\in.tif--第1页失败.";
  EXPECT_EQ(list.lines, (Lines{told, L"~", told, L"~"}));
  EXPECT_EQ(window.busyPointer, (std::vector{true, false, true, false, true, false, true, false}));
  EXPECT_THAT(station.takeLog(),
              testing::MatchesRegex(
                  "SaveAsDocument:.*\nSaveAsPage:.*\nSaveAsDocument:.*\nChangeToPDF:转换PDF出错! "
                  "Error-broken要转PDF的文件=.in.tif sChangedPDF.*   0\nSaveAsPage:.*\n"
                  "ChangeToPagePDF:转换PDF出错! Error-broken sChangedPDF.*   0\n"));
}

TEST_F(Savers, ARealFileIsConvertedToADocumentAndToPages) {
  station.shell(
      "convert -size 400x200 xc:white -draw 'rectangle 9,9 99,99' -density 100 "
      "\\( +clone -type bilevel \\) -compress LZW in.tif");
  std::array<ImagingControl, 6> real;
  DocumentConversion convert(instancesOf(real), list);
  const std::wstring in = station.path(L"in.tif");
  for (int run = 0; run < 2; ++run) {
    EXPECT_TRUE(convert.ChangeToDocPDF(in, station.path(L"d.pdf"), L"", 2, 0));
    EXPECT_TRUE(convert.ChangeToPagePDF(in, station.path(L"pages"), L"", 2, 0));
  }
  // 200 dots per inch, not the source's; the second run adds to the pages' files alone.
  station.shell(
      "qpdf --check d.pdf && pdfinfo d.pdf | grep '144 x 72 pts' && "
      "test $(qpdf --show-npages d.pdf)$(qpdf --show-npages pages/002.pdf) = 22");
  EXPECT_TRUE(list.lines.empty() && station.takeLog().empty());

  // A target that is the source would begin with its deletion.
  station.shell(
      "mkdir -p Batchs/B; cp in.tif Batchs/B/P.TIF; cp in.tif keep; ln -s in.tif link.tif");
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"in.tif", L"in.tif"},
      {L"in.tif", L"link.tif"},
      {L"link.tif", L"in.ts"},
      {L"Batchs\\b\\p.tif", L"Batchs\\B\\P.TIF"}};
  for (const auto& [source, target] : cases) {
    const std::wstring from = station.path(source), to = station.path(target);
    EXPECT_FALSE(convert.ChangeToDocPDF(from, to, L"", 0, 0));
    EXPECT_NE(station.takeLog().find(": File exists要转PDF的文件="), std::string::npos);
    if (target == L"in.ts") continue;
    EXPECT_FALSE(convert.ChangeToPagePDF(from, to, L"", 0, 0));
  }
  station.shell("test -L link.tif && cmp in.tif keep && cmp Batchs/B/P.TIF keep");
  // Nor may a page be added to the file that it comes from. The source has two pages.
  const std::pair<std::wstring, bool> pageFiles[] = {
      {L"own\\001.tif", false}, {L"own\\002.tif", false}, {L"link", false},
      {L"own\\003.tif", true},  {L"own\\01.tif", true},   {L"own\\002.TIF", true}};
  for (const auto& [source, isConverted] : pageFiles) {
    const std::wstring from = station.path(source);
    station.shell("rm -rf own; mkdir own; ln -sf own/002.tif link; cat keep > " +
                  quoted(nativePath(from)));
    EXPECT_EQ(convert.ChangeToPagePDF(from, station.path(L"own"), L"", 0, 0), isConverted);
    EXPECT_EQ(station.takeLog().find(": File exists要转PDF的文件=") == std::string::npos,
              isConverted);
    EXPECT_EQ(station.shell("ls own | wc -l"), isConverted ? "3\n" : "1\n") << toUtf8(source);
    EXPECT_EQ(readBytes(nativePath(from)), station.read("keep"));
  }

  // A page of which nothing can be decoded is left out, and told.
  station.shell(
      "convert in.tif[1] -type bilevel -compress Group4 good.tif && tiffcp -r 200 good.tif bad.tif "
      "&& dd if=/dev/zero of=bad.tif bs=1 seek=8 count=9 conv=notrunc && "
      "tiffcp -a good.tif bad.tif");
  EXPECT_TRUE(convert.ChangeToDocPDF(station.path(L"bad.tif"), station.path(L"d.pdf"), L"", 2, 0));
  EXPECT_THAT(station.takeLog(), testing::ContainsRegex("SavePDF:.*bad.tif: the page cannot be"));
  station.shell("test $(qpdf --show-npages d.pdf) = 1");
}

}  // namespace
}  // namespace orvane::test
