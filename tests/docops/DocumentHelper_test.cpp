#include "docops/DocumentHelper.h"

#include <gmock/gmock.h>

#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;
using Calls = std::vector<std::string>;

/// A component over six recording instances.
class Component : public testing::Test {
 protected:
  enum Engine { Control, Crop, Delete, Insert, Merge, PageCount };

  DocumentHelper::Engines makeEngines() {
    DocumentHelper::Engines owned;
    for (auto& engine : owned) {
      auto recording = std::make_unique<RecordingEngine>();
      engines.push_back(recording.get());
      engine = std::move(recording);
    }
    return owned;
  }
  // The calls of every instance, which are forgotten, but for the leading calls of a reset.
  std::vector<Calls> callsBehindReset() {
    std::vector<Calls> all;
    for (RecordingEngine* engine : engines) {
      Calls calls = std::exchange(engine->calls, {});
      EXPECT_GE(calls.size(), 3U);
      const auto behind = calls.begin() + std::min<std::ptrdiff_t>(3, std::ssize(calls));
      EXPECT_EQ(Calls(calls.begin(), behind), (Calls{"SourceFile", "Refresh", "Picture"}));
      all.emplace_back(behind, calls.end());
    }
    return all;
  }

  TempStation station;
  RecordingWindow window;
  std::vector<RecordingEngine*> engines;
  DocumentHelper helper{makeEngines()};
};

TEST_F(Component, EveryOperationOnPagesResetsAllInstancesFirst) {
  const std::vector<std::function<bool()>> operations{
      [&] { return helper.MergeDocument(L"", nullptr); },
      [&] { return helper.MergeDocumentFor奇偶排序(L"N", nullptr, false); },
      [&] { return helper.SaveAsDocument(L"D", 0, true, 0, 0, L"\\o", L"", L""); },
      [&] { return !helper.DeletePage(L"\\m.tif", 1); },
      [&] { return !helper.CreateThumbnailImage(L"\\m.tif", 4); },
      [&] { return helper.Terminate(), false; }};
  for (const auto& operation : operations) {
    EXPECT_FALSE(operation());
    callsBehindReset();
  }
  helper.DeleteDocumentForDocumentID(L"D");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D"), L"D");
  for (const RecordingEngine* engine : engines) EXPECT_TRUE(engine->calls.empty());

  station.takeLog();
  engines[Merge]->throwsAt = "Refresh";  // a reset that fails is logged by Terminate alone
  EXPECT_FALSE(helper.DeletePage(L"\\m.tif", 1));
  helper.Terminate();
  EXPECT_EQ(station.takeLog(), "Orvane成果导出[DocumentHelper]:Terminate-Err:broken\n");
}

TEST_F(Component, AThumbnailThatFailsCleansUpWithoutAWord) {
  engines[Crop]->throwsAt = "ResizeImage";
  EXPECT_FALSE(helper.CreateThumbnailImage(L"\\x.tif", 4));
  const std::vector<Calls> calls = callsBehindReset();
  EXPECT_THAT(calls[Control], ElementsAre("PageNumber 1", "SourceFile \\x.tif", "CopyDIB",
                                          "SourceFile", "Picture"));
  EXPECT_THAT(calls[Crop], ElementsAre("hDIB 77", "ResizeImage 250 150", "SourceFile", "Picture"));
  EXPECT_EQ(station.takeLog(), "");
}

TEST(RealComponent, WritesAThumbnailOfPageOne) {
  const TempStation station;
  station.shell("convert -size 1003x603 xc:red -size 40x40 xc:blue -compress LZW x.tif");
  DocumentHelper helper;
  EXPECT_TRUE(helper.CreateThumbnailImage(station.path(L"x.tif"), 4));
  EXPECT_EQ(station.shell("identify -format '%m %wx%h' x.tif_B"), "JPEG 250x150");
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"x.tif"), 2000));
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"absent.tif"), 2));
  EXPECT_EQ(station.takeLog(), "");
}

}  // namespace
}  // namespace orvane::test
