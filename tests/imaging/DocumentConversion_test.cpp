#include "imaging/DocumentConversion.h"

#include <map>

#include "imaging/HostFixture.h"
#include "imaging/ImagingControl.h"
#include "support/command.h"

namespace orvane::test {
namespace {

class Conversion : public HostFixture {
 protected:
  DocumentConversion conversion{instances, list};

  static Calls pageCalls(int page, const std::string& target, bool append, const Calls& codes) {
    Calls calls{append ? "SaveMultiPage 1" : "SaveMultiPage 0",
                "PageNumber " + std::to_string(page), "SourceFile \\in.tif",
                "TargetFile " + target};
    calls.insert(calls.end(), codes.begin(), codes.end());
    calls.push_back("SaveFile");
    return calls;
  }
};

const std::vector<std::string> kResolution{"ResolutionX 200.000000", "ResolutionY 200.000000",
                                           "OutputType 40"};

std::vector<std::string> pdfCodes(const std::vector<std::string>& compression) {
  std::vector<std::string> codes = kResolution;
  codes.insert(codes.end(), compression.begin(), compression.end());
  return codes;
}

TEST_F(Conversion, TheSaversWriteTheirCodesInTheirOrder) {
  struct Row {
    bool pdf;
    std::int16_t bits;
    bool compress;
    Calls codes;
  };
  const std::vector<Row> rows{
      {false, 1, true, {"OutputType 15", "TiffCompression 3"}},
      {false, 8, true, {"OutputType 18", "TiffCompression 6"}},
      {false,
       1,
       false,
       {"OutputType 15", "TiffCompression 3", "OutputType 4", "TiffCompression 0"}},
      {false,
       24,
       false,
       {"OutputType 18", "TiffCompression 6", "OutputType 4", "TiffCompression 0"}},
      {true, 1, true, pdfCodes({"PdfCompression 4"})},
      {true, 2, true, pdfCodes({"PdfCompression 6"})},
      {true, 24, false, pdfCodes({"PdfCompression 6", "PdfCompression 0"})},
  };
  const std::wstring target = station.path(L"o\\a.jpg");
  for (const Row& row : rows) {
    control.calls.clear();
    control.bitsPerPixel = row.bits;
    const auto save = row.pdf ? &DocumentConversion::SavePDF : &DocumentConversion::SaveImage;
    save(control, L"\\in.tif", 7, target, row.compress, true);
    EXPECT_EQ(control.calls, pageCalls(7, toUtf8(target), true, row.codes));
  }
  EXPECT_EQ(window.yields, 0);

  control.throwsAt = "SaveFile";
  DocumentConversion::SaveImage(control, L"\\in.tif", 1, target);
  DocumentConversion::SavePDF(control, L"\\in.tif", 1, target);
  EXPECT_EQ(control.calls.back(), "SaveFile");  // nothing is cleared
  EXPECT_EQ(station.logEntries(),
            (Lines{L"Orvane成果导出 - SaveImage:broken", L"Orvane成果导出 - SavePDF:broken"}));
}

TEST_F(Conversion, ThePlaceholderInThePathBecomesTheExtension) {
  struct Row {
    std::int16_t type;
    const char* placed;
  };
  for (const Row& row : {Row{0, "x.tifv/b.tif"}, Row{1, "x.jpgv/b.jpg"}, Row{2, "x.pdfv/b.pdf"},
                         Row{3, "x.tsv/b.ts"}}) {
    control.calls.clear();
    EXPECT_TRUE(conversion.SaveAsDocument(L"\\in.tif", row.type, 0, station.path(L"x.tsv\\b.ts")));
    const std::filesystem::path target = station.native(row.placed);
    EXPECT_TRUE(std::filesystem::is_directory(target.parent_path()));
    EXPECT_EQ(callsBehind(1), [&] {
      Calls calls = pageCalls(1, toUtf8(pathText(target)), false,
                              row.type == 0 ? Calls{"OutputType 15", "TiffCompression 3"}
                                            : pdfCodes({"PdfCompression 4"}));
      calls.push_back("SourceFile");
      return calls;
    }());
  }
  EXPECT_EQ(window.yields, 4);
}

TEST_F(Conversion, PagesGetNumberedFilesAndExistingOnesAreAddedTo) {
  control.pageCounts = {1000};
  writeBytes(station.native("o/007.tif"), "");
  EXPECT_TRUE(conversion.SaveAsPage(L"\\in.tif", 0, 1, station.path(L"o")));
  const auto targetOf = [&](const std::string& name) {
    return "TargetFile " + toUtf8(station.path(L"o\\")) + name;
  };
  std::map<std::string, int> targets;
  for (const std::string& call : control.calls) ++targets[call];
  for (const char* name : {"001.tif", "999.tif", "1000.tif"}) EXPECT_EQ(targets[targetOf(name)], 1);
  EXPECT_EQ(targets["SaveMultiPage 1"], 1);
  EXPECT_EQ(targets["SaveFile"], 1000);
}

TEST_F(Conversion, AFailureIsToldInTheListAndThePointerGivenBack) {
  // The target's folder cannot be made: a file stands in its way.
  writeBytes(station.native("file"), "x");
  const std::wstring blocked = station.path(L"file\\o\\b.ts");
  EXPECT_FALSE(conversion.ChangeToDocPDF(L"\\in.tif", blocked, L"", 2, 0));
  EXPECT_FALSE(conversion.ChangeToPagePDF(L"\\in.tif", station.path(L"file\\o"), L"", 2, 0));
  const std::wstring told = L"转换PDF:\\in.tif--第1页失败.";
  EXPECT_EQ(list.lines, (Lines{told, L"~", told, L"~"}));
  EXPECT_EQ(window.busyPointer, (std::vector<bool>{true, false, true, false}));
  const Lines log = station.logEntries();
  ASSERT_EQ(log.size(), 2U);
  EXPECT_EQ(log[0].rfind(L"Orvane成果导出 - SaveAsDocument:", 0), 0U);
  EXPECT_EQ(log[1].rfind(L"Orvane成果导出 - SaveAsPage:", 0), 0U);
}

// A list that fails stands for a raised failure in a conversion's own steps.
class BrokenList : public RecordingList {
  void addItem(std::wstring_view) override { throw Failure("broken"); }
};

TEST_F(Conversion, ARaisedFailureIsLoggedWithItsNote) {
  BrokenList broken;
  DocumentConversion failing(instances, broken);
  writeBytes(station.native("file"), "x");
  const std::wstring target = station.path(L"file\\o\\b");
  EXPECT_FALSE(failing.ChangeToDocPDF(L"\\in.tif", target, L"", 2, 0));
  EXPECT_FALSE(failing.ChangeToPagePDF(L"\\in.tif", target, L"", 2, 0));
  const Lines log = station.logEntries();
  ASSERT_EQ(log.size(), 4U);
  EXPECT_EQ(log[1],
            L"Orvane成果导出 - ChangeToPDF:转换PDF出错! Error-broken要转PDF的文件=\\in.tif"
            L" sChangedPDFFilePath=" +
                target + L"   0");
  EXPECT_EQ(log[3],
            L"Orvane成果导出 - ChangeToPagePDF:转换PDF出错! Error-broken"
            L" sChangedPDFFilePath=" +
                target + L"   0");
  EXPECT_EQ(window.busyPointer, (std::vector<bool>{true, false, true, false}));
}

TEST_F(Conversion, ARealFileBecomesADocumentAndPages) {
  outputOf(
      "convert -size 400x200 xc:white -fill black -draw 'rectangle 9,9 99,99' -density 100 "
      "\\( +clone -type bilevel \\) -compress LZW " +
      quoted(station.native("in.tif")));
  std::array<ImagingControl, 6> real;
  DocumentConversion convert({real[0], real[1], real[2], real[3], real[4], real[5]}, list);
  const std::wstring in = station.path(L"in.tif");
  for (int run = 0; run < 2; ++run) {
    EXPECT_TRUE(convert.ChangeToDocPDF(in, station.path(L"d.pdf"), L"", 2, 0));
    EXPECT_TRUE(convert.ChangeToPagePDF(in, station.path(L"pages"), L"", 2, 0));
  }
  const std::string document = quoted(station.native("d.pdf"));
  outputOf("qpdf --check " + document);
  const std::string info = outputOf("pdfinfo " + document);
  EXPECT_NE(info.find("144 x 72 pts"), info.npos) << info;  // 200 dots per inch, not the source's
  EXPECT_EQ(outputOf("qpdf --show-npages " + document), "2\n");
  // A second run over the pages adds to the files of the first.
  EXPECT_EQ(outputOf("qpdf --show-npages " + quoted(station.native("pages/002.pdf"))), "2\n");
  EXPECT_TRUE(list.lines.empty());
  EXPECT_TRUE(station.logEntries().empty());
}

}  // namespace
}  // namespace orvane::test
