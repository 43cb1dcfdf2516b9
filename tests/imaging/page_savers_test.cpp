#include "imaging/HostFixture.h"
#include "imaging/mdlImageProcess.h"

namespace orvane::test {
namespace {

using namespace mdlImageProcess;

struct PageSavers : HostFixture {
  std::wstring target(const std::wstring& name) const { return station.path(L"out\\sub\\" + name); }
};

TEST_F(PageSavers, WriteTheCodesOfThePageInTheirOrder) {
  const struct {
    decltype(&SaveImage) save;
    std::int16_t bits;
    std::wstring name;
    bool compress;
    std::int16_t ratios;
    std::string codes;
  } rows[] = {
      {SaveImage, 1, L"a.tif", true, 0, "OutputType 15; TiffCompression 3"},
      {SaveImage, 1, L"a.jpg", true, 2, "OutputType 15; TiffCompression 3"},
      {SaveImage, 2, L"a.tif", true, 0, "OutputType 18; TiffCompression 6; Major 20; Minor 16"},
      {SaveImage, 24, L"a.jpeg", true, 1, "OutputType 18; TiffCompression 6; Major 40; Minor 32"},
      {SaveImage, 24, L"a.JPG", true, 2, "OutputType 8; TiffCompression 6; Major 60; Minor 48"},
      {SaveImage, 8, L"a.Jpg", true, 3, "OutputType 8; TiffCompression 6"},
      {SaveImage, 24, L"a.jpg", false, 0, "OutputType 4; TiffCompression 4"},
      {SavePDF, 1, L"a.pdf", true, 1, "OutputType 40; PdfCompression 4"},
      {SavePDF, 8, L"a.jpg", true, 1, "OutputType 40; PdfCompression 6; Major 40; Minor 32"},
      {SavePDF, 24, L"a.pdf", true, -1, "OutputType 40; PdfCompression 6"},
      {SavePDF, 24, L"a.pdf", false, 0,
       "OutputType 40; PdfCompression 6; Major 20; Minor 16; PdfCompression 0"},
      {SavePDF, 1, L"a.pdf", false, 0, "OutputType 40; PdfCompression 4; PdfCompression 0"},
  };
  for (const auto& [save, bits, name, compress, ratios, codes] : rows) {
    for (const bool append : {false, true}) {
      control.bitsPerPixel = bits;
      EXPECT_TRUE(save(control, L"\\in.tif", 3, target(name), compress, ratios, append));
      EXPECT_EQ(control.takeCalls(), std::string(append ? "SaveMultiPage 1" : "SaveMultiPage 0") +
                                         "; PageNumber 3; SourceFile \\in.tif; TargetFile " +
                                         toUtf8(target(name)) + "; " + codes + "; SaveFile; " +
                                         kClear);
    }
  }
  EXPECT_TRUE(std::filesystem::is_directory(station.native("out/sub")));
  EXPECT_EQ(window.yields, 24);
  // An empty target saves over the source, whatever its name: as TIFF.
  EXPECT_TRUE(SaveImage(control, L"\\in.jpg", 3, L"", true, 3, true));
  EXPECT_NE(control.takeCalls().find("TargetFile \\in.jpg; OutputType 15"), std::string::npos);
  EXPECT_TRUE(station.logEntries().empty());
}

TEST_F(PageSavers, AStaleErrorIsClearedAndOnlyTheNewOneCounts) {
  for (const std::int32_t afterSave : {0, 9}) {
    control.imagError = 5;
    control.imagErrorAfterSave = afterSave;
    EXPECT_EQ(SaveImage(control, L"\\in.tif", 3, target(L"a"), true, 0, false), afterSave == 0);
    EXPECT_EQ(control.takeCalls().find("SaveMultiPage 0; " + kClear + "; SaveMultiPage 0;"), 0U);
  }
}

TEST_F(PageSavers, EveryRaisedFailureClearsLogsAndAnswersFalse) {
  Lines expected;
  for (const auto& [save, name] : {std::pair{&SaveImage, L"SaveImage"}, {&SavePDF, L"SavePDF"}}) {
    for (const char* step : {"PageNumber", "TargetFile", "OutputType", "SaveFile"}) {
      control.throwsAt = step;
      EXPECT_FALSE(save(control, L"\\in.tif", 1, target(L"a.tif"), true, 0, true));
      EXPECT_TRUE(control.takeCalls().ends_with("; SaveMultiPage 0; " + kClear));
      expected.push_back(kLog + L"Orvane成果导出:mdlImageProcess-" + name +
                         L"-broken ImgControl.ImagError =0");
    }
  }
  EXPECT_EQ(station.logEntries(), expected);
  control.throwsAt = "";  // a name without a folder has no folder path to make
  EXPECT_FALSE(SavePDF(control, L"\\in.tif", 1, L"bare.tif", true, 0, false));
}

TEST_F(PageSavers, CountPagesByAskingTheSecondInstanceOnlyAboutOne) {
  const std::string question = "; FilePageCount \\in.tif";
  const struct {
    std::int32_t first, second, count;
    bool asked;
  } rows[] = {{3, 9, 3, false}, {0, 9, 0, false},     {1, 3, 3, true},
              {1, 0, 0, true},  {40000, 9, 1, false}, {1, 1, 1, true}};
  for (const auto& row : rows) {
    control.imagError = engines[1].imagError = 4;
    control.pageCounts = {row.first};
    engines[1].pageCounts = {row.second};
    EXPECT_EQ(TifPagesCount(control, engines[1], L"\\in.tif"), row.count);
    EXPECT_EQ(control.takeCalls(), kClear + question);
    EXPECT_EQ(engines[1].takeCalls(), kClear + (row.asked ? question : ""));
  }
  control.throwsAt = "FilePageCount";
  EXPECT_EQ(TifPagesCount(control, engines[1], L"\\in.tif"), 1);
  EXPECT_EQ(station.logEntries().back(),
            kLog + L"Orvane成果导出:mdlImageProcess-TifPagesCount Err:broken");
}

TEST_F(PageSavers, ResaveKeepsThePageLoadedAndLooksAtNoError) {
  const std::tuple<std::int16_t, bool, std::string> rows[] = {
      {1, true, "OutputType 15; TiffCompression 3"},
      {24, true, "OutputType 18; TiffCompression 6"},
      {1, false, "OutputType 15; TiffCompression 3; OutputType 4; TiffCompression 0"},
      {8, false, "OutputType 18; TiffCompression 6; OutputType 4; TiffCompression 0"}};
  control.imagErrorAfterSave = 2;
  for (const auto& [bits, compress, codes] : rows) {
    control.bitsPerPixel = bits;
    EXPECT_TRUE(SaveImageEx(control, target(L"a.tif"), compress, true));
    EXPECT_EQ(control.takeCalls(), "TargetFile " + toUtf8(target(L"a.tif")) +
                                       "; SaveMultiPage 1; " + codes + "; SaveFile");
  }
  EXPECT_EQ(window.yields, 4);
  control.throwsAt = "SaveFile";
  EXPECT_FALSE(SaveImageEx(control, target(L"a.tif"), true, true));
  EXPECT_EQ(station.logEntries(),
            Lines{kLog + L"Orvane成果导出:mdlImageProcess-SaveImageEx2-broken"});
}

}  // namespace
}  // namespace orvane::test
