#include "imaging/PageCleanup.h"

#include "imaging/HostFixture.h"
#include "imaging/ImagingControl.h"
#include "imaging/differing_pixels.h"

namespace orvane::test {
namespace {

using namespace mdlBatchAutoProcessStep;

struct Cleanup : HostFixture {
  PageCleanup cleanup{instances, list};

  Cleanup() { setSteps(L"", false, {}); }
  ~Cleanup() override { setSteps(L"", false, {}); }

  static void setSteps(const std::wstring& rotate, bool deskew, const CropMargins& crop) {
    AutoRotate = rotate, AutoDeskew = deskew, AutoCrop = crop;
  }
  bool run(PageCleanup& with, const std::wstring& source = L"\\in.tif") const {
    return with.ImageDocProcess(source, station.path(L"out.tif"), station.path(L"err.log"));
  }
};

TEST_F(Cleanup, TheStepsComeInTheirOrderAndOnlyWhenAskedFor) {
  const struct {
    std::wstring rotate;
    bool deskew;
    CropMargins crop;
    std::string steps;
  } rows[] = {
      {L"", false, {false, 9, 9, 9, 9}, ""},
      {L"向右旋转90度", false, {}, "RotateImage -90; "},
      {L"向右旋转180度", false, {}, "RotateImage -180; "},
      {L"向左旋转180度", false, {}, "RotateImage 180; "},
      {L"向左旋转90度 ", false, {true, 0, 0, 0, 0}, "CropImage 0 0 1003 603; "},
      {L"向左旋转90度",
       true,
       {true, 1, 2, 3, 4},
       "DeskewFirstStep; DeskewSecondStep 0; CropImage 1 2 999 597; RotateImage 90; "},
  };
  for (const auto& [rotate, deskew, crop, steps] : rows) {
    setSteps(rotate, deskew, crop);
    EXPECT_TRUE(run(cleanup));
    EXPECT_EQ(control.takeCalls(), kClear + "; Picture; SourceFile; Refresh; PageNumber 1; " +
                                       "SourceFile \\in.tif; " + steps +
                                       "FinishingFilter 0.3 1; TargetFile " +
                                       toUtf8(station.path(L"out.tif")) + "; SaveMultiPage 1; " +
                                       "BitsPerPixel; OutputType 15; TiffCompression 3; SaveFile");
  }
  EXPECT_TRUE(list.lines.empty());
}

TEST_F(Cleanup, APageThatCannotBeSavedTakesTheTargetWithItAndNoOtherFailureDoes) {
  const std::wstring unsaved = L"图像处理失败--保存第1页的处理结果时出错！";
  const std::wstring other = L"frmMain-ImageDocProcess Err:broken";
  for (const auto& [step, message] :
       {std::pair{"FinishingFilter", other}, std::pair{"SaveFile", unsaved}}) {
    station.shell("echo pages so far > out.tif; rm -f err.log");
    control.throwsAt = step;
    EXPECT_FALSE(run(cleanup));
    EXPECT_EQ(control.takeCalls().ends_with(kClear), message == other);
    EXPECT_EQ(station.shell("iconv -f GBK -t UTF-8 err.log | tail -c +21"),
              ":" + toUtf8(message) + "\r\n\r\n");
    EXPECT_EQ(std::filesystem::exists(station.native("out.tif")), message == other);
  }
  EXPECT_EQ(list.lines, (Lines{unsaved, L"~"}));
  EXPECT_EQ(station.takeLog(), "Orvane成果导出:" + toUtf8(other) +
                                   "\nOrvane成果导出:mdlImageProcess-SaveImageEx2-broken\n");
  station.shell("echo the only scan > out.tif; ln -s out.tif link");  // which is never deleted
  EXPECT_FALSE(run(cleanup, station.path(L"link")));
  EXPECT_EQ(station.read("out.tif"), "the only scan\n");
  WriteBatchErrorLog(L"x", station.path(L"absent\\err.log"));  // is no failure
}

TEST_F(Cleanup, ARealFileIsCleanedPageByPageAndAddedTo) {
  station.shell(
      "convert -size 300x200 xc:white -draw 'rectangle 20,20 120,60' -type bilevel "
      "-compress Group4 p.tif && tiffcp p.tif p.tif in.tif && "
      "convert p.tif -crop 280x180+10+10 +repage -rotate -90 expected.png");
  std::array<ImagingControl, 6> real;
  PageCleanup realCleanup(instancesOf(real), list);
  setSteps(L"向左旋转90度", true, {true, 10, 10, 10, 10});
  for (const char* pages : {"2\n", "4\n"}) {
    EXPECT_TRUE(run(realCleanup, station.path(L"in.tif")));
    EXPECT_EQ(station.shell("identify -format '%C %z\\n' out.tif | grep -c '^Group4 1$'"), pages);
  }
  const std::string last = quoted(station.native("out.tif")) + "[3]";
  EXPECT_EQ(differingPixels(last, quoted(station.native("expected.png"))), "0");
  // A page of which nothing can be decoded does not come out white.
  station.shell(
      "tiffcp -r 200 p.tif in.tif && dd if=/dev/zero of=in.tif bs=1 seek=8 count=9 "
      "conv=notrunc && cp out.tif before.tif");
  EXPECT_FALSE(run(realCleanup, station.path(L"in.tif")));
  station.shell(
      "LC_ALL=C grep -a 'Err:.*in.tif: the page cannot be decoded' err.log && cmp out.tif "
      "before.tif");
}

}  // namespace
}  // namespace orvane::test
