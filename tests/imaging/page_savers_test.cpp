#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "imaging/RecordingEngine.h"
#include "imaging/mdlImageProcess.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using Calls = std::vector<std::string>;

const Calls kClear{"SourceFile", "Refresh", "Picture"};

Calls joined(std::vector<Calls> parts) {
  Calls all;
  for (const Calls& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

class PageSavers : public testing::Test {
 protected:
  TempStation station;
  RecordingWindow window;
  RecordingEngine engine;

  std::wstring target(const std::wstring& name) const { return station.path(L"out\\sub\\" + name); }

  Calls loadAndTarget(bool append, const std::wstring& name) const {
    return {append ? "SaveMultiPage 1" : "SaveMultiPage 0", "PageNumber 3", "SourceFile \\in.tif",
            "TargetFile " + toUtf8(target(name))};
  }
};

struct CodeRow {
  bool pdf;
  std::int16_t bits;
  const wchar_t* name;
  bool compress;
  std::int16_t ratios;
  Calls codes;
};

TEST_F(PageSavers, WriteTheCodesOfThePageInTheirOrder) {
  const std::vector<CodeRow> rows{
      {false, 1, L"a.tif", true, 0, {"OutputType 15", "TiffCompression 3"}},
      {false, 1, L"a.jpg", true, 2, {"OutputType 15", "TiffCompression 3"}},
      {false, 2, L"a.tif", true, 0, {"OutputType 18", "TiffCompression 6", "Major 20", "Minor 16"}},
      {false,
       24,
       L"a.jpeg",
       true,
       1,
       {"OutputType 18", "TiffCompression 6", "Major 40", "Minor 32"}},
      {false, 24, L"a.JPG", true, 2, {"OutputType 8", "TiffCompression 6", "Major 60", "Minor 48"}},
      {false, 8, L"a.Jpg", true, 3, {"OutputType 8", "TiffCompression 6"}},
      {false, 24, L"a.jpg", false, 0, {"OutputType 4", "TiffCompression 4"}},
      {false, 1, L"a.tif", false, 0, {"OutputType 4", "TiffCompression 4"}},
      {true, 1, L"a.pdf", true, 1, {"OutputType 40", "PdfCompression 4"}},
      {true, 8, L"a.jpg", true, 1, {"OutputType 40", "PdfCompression 6", "Major 40", "Minor 32"}},
      {true, 24, L"a.pdf", true, -1, {"OutputType 40", "PdfCompression 6"}},
      {true,
       24,
       L"a.pdf",
       false,
       0,
       {"OutputType 40", "PdfCompression 6", "Major 20", "Minor 16", "PdfCompression 0"}},
      {true, 1, L"a.pdf", false, 0, {"OutputType 40", "PdfCompression 4", "PdfCompression 0"}},
  };
  for (const CodeRow& row : rows) {
    for (const bool append : {false, true}) {
      engine.calls.clear();
      engine.bitsPerPixel = row.bits;
      const auto save = row.pdf ? mdlImageProcess::SavePDF : mdlImageProcess::SaveImage;
      EXPECT_TRUE(save(engine, L"\\in.tif", 3, target(row.name), row.compress, row.ratios, append));
      EXPECT_EQ(engine.calls,
                joined({loadAndTarget(append, row.name), row.codes, {"SaveFile"}, kClear}));
    }
  }
  EXPECT_TRUE(std::filesystem::is_directory(station.native("out/sub")));
  EXPECT_EQ(window.yields, static_cast<int>(2 * rows.size()));
  EXPECT_TRUE(station.logEntries().empty());
}

TEST_F(PageSavers, AStaleErrorIsClearedAndOnlyTheNewOneCounts) {
  for (const std::int32_t afterSave : {0, 9}) {
    engine.calls.clear();
    engine.imagError = 5;
    engine.imagErrorAfterSave = afterSave;
    EXPECT_EQ(mdlImageProcess::SaveImage(engine, L"\\in.tif", 3, target(L"a.tif"), true, 0, false),
              afterSave == 0);
    EXPECT_EQ(Calls(engine.calls.begin(), engine.calls.begin() + 4),
              joined({{"SaveMultiPage 0"}, kClear}));
    EXPECT_EQ(engine.SourceFile(), L"");
  }
  EXPECT_TRUE(station.logEntries().empty());
}

TEST_F(PageSavers, AnEmptyTargetSavesOverTheSource) {
  EXPECT_TRUE(mdlImageProcess::SaveImage(engine, L"\\in.jpg", 3, L"", true, 0, true));
  engine.bitsPerPixel = 24;
  EXPECT_TRUE(mdlImageProcess::SaveImage(engine, L"\\in.jpg", 3, L"", true, 0, true));
  EXPECT_EQ(engine.calls[3], "TargetFile \\in.jpg");
  EXPECT_EQ(engine.calls[4], "OutputType 15");
  EXPECT_EQ(engine.calls[14], "OutputType 18");
}

TEST_F(PageSavers, EveryRaisedFailureClearsLogsAndAnswersFalse) {
  struct Saver {
    decltype(&mdlImageProcess::SaveImage) save;
    std::wstring prefix;
  };
  std::vector<std::wstring> log;
  for (const Saver& saver : {Saver{mdlImageProcess::SaveImage, L"mdlImageProcess-SaveImage-"},
                             Saver{mdlImageProcess::SavePDF, L"mdlImageProcess-SavePDF-"}}) {
    for (const char* step : {"PageNumber", "TargetFile", "OutputType", "SaveFile"}) {
      RecordingEngine broken;
      broken.throwsAt = step;
      EXPECT_FALSE(saver.save(broken, L"\\in.tif", 1, target(L"a.tif"), true, 0, true));
      EXPECT_EQ(Calls(broken.calls.end() - 4, broken.calls.end()),
                joined({{"SaveMultiPage 0"}, kClear}));
      log.push_back(L"Orvane成果导出 - Orvane成果导出:" + saver.prefix +
                    L"broken ImgControl.ImagError =0");
    }
    // A name without a folder: there is no folder path to make.
    EXPECT_FALSE(saver.save(engine, L"\\in.tif", 1, L"bare.tif", true, 0, false));
    EXPECT_EQ(engine.SourceFile(), L"");
  }
  std::vector<std::wstring> entries = station.logEntries();
  ASSERT_EQ(entries.size(), log.size() + 2);
  entries.erase(entries.begin() + 4);
  entries.pop_back();
  EXPECT_EQ(entries, log);
}

TEST_F(PageSavers, CountPagesByAskingTheSecondInstanceOnlyAboutOne) {
  struct Row {
    std::vector<std::int32_t> first, second;
    std::int16_t count;
    std::size_t asked;  ///< questions to the second instance
  };
  const std::vector<Row> rows{{{3}, {9}, 3, 0}, {{0}, {9}, 0, 0},     {{1}, {3}, 3, 1},
                              {{1}, {0}, 0, 1}, {{40000}, {9}, 1, 0}, {{1}, {1}, 1, 1}};
  for (const Row& row : rows) {
    RecordingEngine first, second;
    first.pageCounts = row.first;
    second.pageCounts = row.second;
    first.imagError = second.imagError = 4;
    EXPECT_EQ(mdlImageProcess::TifPagesCount(first, second, L"\\in.tif"), row.count);
    EXPECT_EQ(first.calls, joined({kClear, {"FilePageCount \\in.tif"}}));
    EXPECT_EQ(second.calls.size(), kClear.size() + row.asked);
  }
  RecordingEngine broken;
  broken.throwsAt = "FilePageCount";
  EXPECT_EQ(mdlImageProcess::TifPagesCount(broken, engine, L"\\in.tif"), 1);
  EXPECT_EQ(station.logEntries().back(),
            L"Orvane成果导出 - Orvane成果导出:mdlImageProcess-TifPagesCount Err:broken");
}

TEST_F(PageSavers, ResaveKeepsThePageLoadedAndLooksAtNoError) {
  struct Row {
    std::int16_t bits;
    bool compress;
    Calls codes;
  };
  const Calls bilevel{"OutputType 15", "TiffCompression 3"};
  const Calls multiBit{"OutputType 18", "TiffCompression 6"};
  const Calls plain{"OutputType 4", "TiffCompression 0"};
  engine.imagErrorAfterSave = 2;
  for (const Row& row :
       {Row{1, true, bilevel}, Row{24, true, multiBit}, Row{1, false, joined({bilevel, plain})},
        Row{8, false, joined({multiBit, plain})}}) {
    engine.calls.clear();
    engine.bitsPerPixel = row.bits;
    EXPECT_TRUE(mdlImageProcess::SaveImageEx(engine, target(L"a.tif"), row.compress, true));
    EXPECT_EQ(engine.calls, joined({{"TargetFile " + toUtf8(target(L"a.tif")), "SaveMultiPage 1"},
                                    row.codes,
                                    {"SaveFile"}}));
  }
  EXPECT_EQ(window.yields, 4);
  engine.throwsAt = "SaveFile";
  EXPECT_FALSE(mdlImageProcess::SaveImageEx(engine, target(L"a.tif"), true, true));
  EXPECT_EQ(station.logEntries(),
            std::vector<std::wstring>{
                L"Orvane成果导出 - Orvane成果导出:mdlImageProcess-SaveImageEx2-broken"});
}

}  // namespace
}  // namespace orvane::test
