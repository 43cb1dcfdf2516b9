#include "imaging/PageCleanup.h"

#include <regex>

#include "imaging/HostFixture.h"
#include "imaging/ImagingControl.h"
#include "imaging/mdlBatchAutoProcessStep.h"
#include "support/command.h"

namespace orvane::test {
namespace {

class Cleanup : public HostFixture {
 protected:
  PageCleanup cleanup{instances, list};

  void SetUp() override { setSteps(L"", false, {}); }
  void TearDown() override { setSteps(L"", false, {}); }

  static void setSteps(const std::wstring& rotate, bool deskew,
                       mdlBatchAutoProcessStep::CropMargins crop) {
    mdlBatchAutoProcessStep::AutoRotate = rotate;
    mdlBatchAutoProcessStep::AutoDeskew = deskew;
    mdlBatchAutoProcessStep::AutoCrop = crop;
  }

  bool run() {
    return cleanup.ImageDocProcess(L"\\in.tif", station.path(L"out.tif"), station.path(L"err.log"));
  }

  /// The batch error log without its time stamps, which must be there.
  std::wstring errorLog() const {
    const std::wregex stamp(LR"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d :)");
    return std::regex_replace(fromAnsi(readBytes(station.native("err.log"))), stamp, L"@");
  }
};

TEST_F(Cleanup, TheStepsComeInTheirOrderAndOnlyWhenAskedFor) {
  struct Row {
    std::wstring rotate;
    bool deskew;
    mdlBatchAutoProcessStep::CropMargins crop;
    Calls steps;
  };
  const std::string filter = "FinishingFilter 0.300000 1";
  const std::vector<Row> rows{
      {L"", false, {false, 9, 9, 9, 9}, {filter}},
      {L"向右旋转90度", false, {}, {"RotateImage -90.000000", filter}},
      {L"向左旋转90度", false, {}, {"RotateImage 90.000000", filter}},
      {L"向右旋转180度", false, {}, {"RotateImage -180.000000", filter}},
      {L"向左旋转180度", false, {}, {"RotateImage 180.000000", filter}},
      {L"向左旋转90度 ", false, {true, 0, 0, 0, 0}, {"CropImage 0 0 1003 603", filter}},
      {L"向左旋转90度",
       true,
       {true, 1, 2, 3, 4},
       {"DeskewFirstStep", "DeskewSecondStep 0", "CropImage 1 2 999 597", "RotateImage 90.000000",
        filter}},
  };
  for (const Row& row : rows) {
    setSteps(row.rotate, row.deskew, row.crop);
    control.calls.clear();
    EXPECT_TRUE(run());
    Calls expected{"SourceFile", "Refresh", "Picture",      "Picture",
                   "SourceFile", "Refresh", "PageNumber 1", "SourceFile \\in.tif"};
    expected.insert(expected.end(), row.steps.begin(), row.steps.end());
    for (const std::string& call : {"TargetFile " + toUtf8(station.path(L"out.tif")),
                                    std::string("SaveMultiPage 1"), std::string("OutputType 15"),
                                    std::string("TiffCompression 3"), std::string("SaveFile")}) {
      expected.push_back(call);
    }
    EXPECT_EQ(control.calls, expected);
    EXPECT_EQ(pageCount.calls.back(), "FilePageCount \\in.tif");
  }
  pageCount.pageCounts = {0};
  control.calls.clear();
  EXPECT_TRUE(run());
  EXPECT_EQ(control.calls.size(), 3U);
  EXPECT_TRUE(list.lines.empty());
}

TEST_F(Cleanup, APageThatCannotBeSavedTakesTheTargetWithIt) {
  writeBytes(station.native("out.tif"), "pages so far");
  pageCount.pageCounts = {3};
  control.throwsAt = "SaveFile";
  EXPECT_FALSE(run());
  const std::wstring message = L"图像处理失败--保存第1页的处理结果时出错！";
  EXPECT_EQ(list.lines, (Lines{message, L"~"}));
  EXPECT_EQ(errorLog(), L"@" + message + L"\r\n\r\n");
  EXPECT_FALSE(std::filesystem::exists(station.native("out.tif")));
}

TEST_F(Cleanup, AnyOtherFailureLeavesTheTargetAndTheList) {
  writeBytes(station.native("out.tif"), "pages so far");
  control.throwsAt = "FinishingFilter";
  EXPECT_FALSE(run());
  pageCount.pageCounts = {40000};
  EXPECT_FALSE(run());
  EXPECT_EQ(callsBehind(static_cast<std::ptrdiff_t>(control.calls.size()) - 3),
            (Calls{"SourceFile", "Refresh", "Picture"}));
  EXPECT_TRUE(list.lines.empty());
  EXPECT_EQ(readBytes(station.native("out.tif")), "pages so far");
  const std::wstring message = L"frmMain-ImageDocProcess Err:";
  const Lines log = station.logEntries();
  ASSERT_EQ(log.size(), 2U);
  EXPECT_EQ(log[0], L"Orvane成果导出 - Orvane成果导出:" + message + L"broken");
  EXPECT_EQ(errorLog().rfind(L"@" + message + L"broken\r\n\r\n@" + message, 0), 0U);
}

TEST_F(Cleanup, AnErrorLogThatCannotBeWrittenIsNoFailure) {
  WriteBatchErrorLog(L"x", station.path(L"absent\\err.log"));
  WriteBatchErrorLog(L"x", L"");
  EXPECT_FALSE(std::filesystem::exists(station.native("absent")));
}

TEST_F(Cleanup, ARealFileIsCleanedPageByPageAndAddedTo) {
  outputOf(
      "convert -size 300x200 xc:white -fill black -draw 'rectangle 20,20 120,60' -type bilevel"
      " -compress Group4 " +
      quoted(station.native("p.tif")) + " && tiffcp " + quoted(station.native("p.tif")) + " " +
      quoted(station.native("p.tif")) + " " + quoted(station.native("in.tif")));
  std::array<ImagingControl, 6> real;
  PageCleanup realCleanup({real[0], real[1], real[2], real[3], real[4], real[5]}, list);
  setSteps(L"向左旋转90度", true, {true, 10, 10, 10, 10});
  const std::wstring in = station.path(L"in.tif");
  for (const char* pages : {"2\n", "4\n"}) {
    EXPECT_TRUE(
        realCleanup.ImageDocProcess(in, station.path(L"out.tif"), station.path(L"err.log")));
    EXPECT_EQ(outputOf("identify -format '%C %wx%h %z\\n' " + quoted(station.native("out.tif")) +
                       " | grep -c '^Group4 180x280 1$'"),
              pages);
  }
  // What was left of the page comes out turned to the left, pixel for pixel.
  outputOf("convert " + quoted(station.native("p.tif")) +
           " -crop 280x180+10+10 +repage -rotate -90 " + quoted(station.native("expected.png")));
  EXPECT_EQ(runCommand("compare -metric AE " + quoted(station.native("out.tif")) + "'[0]' " +
                       quoted(station.native("expected.png")) + " null:")
                .output,
            "0");
}

}  // namespace
}  // namespace orvane::test
