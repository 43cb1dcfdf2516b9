#include "imaging/DocumentConversion.h"

#include <algorithm>

#include "imaging/HostFixture.h"
#include "imaging/ImagingControl.h"

namespace orvane::test {
namespace {

struct Conversion : HostFixture {
  DocumentConversion conversion{instances, list};
};

std::string pageCalls(int page, const std::wstring& target, bool append, const std::string& codes) {
  return std::string(append ? "SaveMultiPage 1" : "SaveMultiPage 0") + "; PageNumber " +
         std::to_string(page) + "; SourceFile \\in.tif; TargetFile " + toUtf8(target) + "; " +
         codes + "; SaveFile";
}

const std::string kPdf = "ResolutionX 200; ResolutionY 200; OutputType 40; PdfCompression ";
const std::string kPlain = "; OutputType 4; TiffCompression 0";

TEST_F(Conversion, TheSaversWriteTheirCodesInTheirOrder) {
  const auto SaveImage = DocumentConversion::SaveImage, SavePDF = DocumentConversion::SavePDF;
  const std::tuple<decltype(SaveImage), std::int16_t, bool, std::string> rows[] = {
      {SaveImage, 1, true, "OutputType 15; TiffCompression 3"},
      {SaveImage, 8, true, "OutputType 18; TiffCompression 6"},
      {SaveImage, 1, false, "OutputType 15; TiffCompression 3" + kPlain},
      {SaveImage, 24, false, "OutputType 18; TiffCompression 6" + kPlain},
      {SavePDF, 1, true, kPdf + "4"},
      {SavePDF, 2, true, kPdf + "6"},
      {SavePDF, 24, false, kPdf + "6; PdfCompression 0"}};
  const std::wstring target = station.path(L"o\\a.jpg");
  for (const auto& [save, bits, compress, codes] : rows) {
    control.bitsPerPixel = bits;
    control.imagErrorAfterSave = 3;
    save(control, L"\\in.tif", 7, target, compress, true);
    EXPECT_EQ(control.takeCalls(), pageCalls(7, target, true, codes));
  }
  EXPECT_EQ(window.yields, 0);
  control.throwsAt = "SaveFile";
  SaveImage(control, L"\\in.tif", 1, target, true, false);
  SavePDF(control, L"\\in.tif", 1, target, true, false);
  EXPECT_EQ(control.calls.back(), "SaveFile");  // nothing is cleared
  EXPECT_EQ(station.logEntries(), (Lines{kLog + L"SaveImage:broken", kLog + L"SavePDF:broken"}));
}

TEST_F(Conversion, ThePlaceholderInThePathBecomesTheExtension) {
  const std::pair<std::int16_t, std::wstring> rows[] = {
      {0, L"x.tifv\\b.tif"}, {1, L"x.jpgv\\b.jpg"}, {2, L"x.pdfv\\b.pdf"}, {3, L"x.tsv\\b.ts"}};
  for (const auto& [type, placed] : rows) {
    EXPECT_TRUE(conversion.SaveAsDocument(L"\\in.tif", type, 0, station.path(L"x.tsv\\b.ts")));
    const std::string codes = type == 0 ? "OutputType 15; TiffCompression 3" : kPdf + "4";
    EXPECT_TRUE(control.takeCalls().ends_with(pageCalls(1, station.path(placed), false, codes) +
                                              "; SourceFile"));
  }
  EXPECT_EQ(window.yields, 4);
}

TEST_F(Conversion, PagesGetNumberedFilesAndExistingOnesAreAddedTo) {
  control.pageCounts = {1000};
  writeBytes(station.native("o/007.tif"), "");
  EXPECT_TRUE(conversion.SaveAsPage(L"\\in.tif", 0, 1, station.path(L"o")));
  const auto callsOf = [&](const std::string& call) {
    return std::count(control.calls.begin(), control.calls.end(), call);
  };
  const std::string folder = toUtf8(station.path(L"o\\"));
  for (const char* name : {"001.tif", "999.tif", "1000.tif"}) {
    EXPECT_EQ(callsOf("TargetFile " + folder + name), 1);
  }
  EXPECT_EQ(callsOf("SaveMultiPage 1"), 1);
  EXPECT_EQ(callsOf("SaveFile"), 1000);
}

// A list that fails stands for a raised failure in a conversion's own steps.
struct BrokenList : RecordingList {
  void addItem(std::wstring_view) override { throw Failure("broken"); }
};

TEST_F(Conversion, AFailureIsToldInTheListOrLoggedWithItsNoteAndThePointerGivenBack) {
  writeBytes(station.native("file"), "x");  // no folder can be made in its place
  const std::wstring target = station.path(L"file\\o\\b");
  BrokenList brokenList;
  DocumentConversion broken(instances, brokenList);
  for (DocumentConversion* convert : {&conversion, &broken}) {
    EXPECT_FALSE(convert->ChangeToDocPDF(L"\\in.tif", target, L"", 2, 0));
    EXPECT_FALSE(convert->ChangeToPagePDF(L"\\in.tif", target, L"", 2, 0));
  }
  const std::wstring told = L"转换PDF:\\in.tif--第1页失败.";
  EXPECT_EQ(list.lines, (Lines{told, L"~", told, L"~"}));
  EXPECT_EQ(window.busyPointer, (std::vector{true, false, true, false, true, false, true, false}));
  const Lines log = station.logEntries();
  ASSERT_EQ(log.size(), 6U);
  EXPECT_EQ(log[0].find(kLog + L"SaveAsDocument:"), 0U);
  EXPECT_EQ(log[1].find(kLog + L"SaveAsPage:"), 0U);
  const std::wstring error = L"转换PDF出错! Error-broken";
  const std::wstring note = L" sChangedPDFFilePath=" + target + L"   0";
  EXPECT_EQ(log[3], kLog + L"ChangeToPDF:" + error + L"要转PDF的文件=\\in.tif" + note);
  EXPECT_EQ(log[5], kLog + L"ChangeToPagePDF:" + error + note);
}

TEST_F(Conversion, ARealFileBecomesADocumentAndPages) {
  outputOf(
      "convert -size 400x200 xc:white -draw 'rectangle 9,9 99,99' -density 100 "
      "\\( +clone -type bilevel \\) -compress LZW " +
      file("in.tif"));
  std::array<ImagingControl, 6> real;
  DocumentConversion convert(instancesOf(real), list);
  const std::wstring in = station.path(L"in.tif");
  for (int run = 0; run < 2; ++run) {
    EXPECT_TRUE(convert.ChangeToDocPDF(in, station.path(L"d.pdf"), L"", 2, 0));
    EXPECT_TRUE(convert.ChangeToPagePDF(in, station.path(L"pages"), L"", 2, 0));
  }
  // 200 dots per inch, not the source's; the second run adds to the pages' files alone.
  outputOf("cd " + file("") + " && qpdf --check d.pdf && pdfinfo d.pdf | grep '144 x 72 pts' && " +
           "test $(qpdf --show-npages d.pdf)$(qpdf --show-npages pages/002.pdf) = 22");
  EXPECT_TRUE(list.lines.empty() && station.logEntries().empty());
}

}  // namespace
}  // namespace orvane::test
