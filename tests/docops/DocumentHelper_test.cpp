#include "docops/DocumentHelper.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "docstore/ScanTree.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using Calls = std::vector<std::string>;

const Calls kClear{"SourceFile", "Refresh", "Picture"};

/// A component over six recording instances.
class Component : public testing::Test {
 protected:
  enum Engine { Control, Crop, Delete, Insert, Merge, PageCount };

  TempStation station;
  RecordingWindow window;
  std::vector<RecordingEngine*> engines;
  DocumentHelper helper{makeEngines()};

  DocumentHelper::Engines makeEngines() {
    DocumentHelper::Engines owned;
    for (auto& engine : owned) {
      auto recording = std::make_unique<RecordingEngine>();
      engines.push_back(recording.get());
      engine = std::move(recording);
    }
    return owned;
  }
  void forgetCalls() {
    for (RecordingEngine* engine : engines) engine->calls.clear();
  }
};

TEST_F(Component, EveryOperationOnPagesResetsAllInstancesFirst) {
  const std::vector<std::function<void()>> operations{
      [&] { EXPECT_FALSE(helper.MergeDocument(L"", nullptr)); },
      [&] { EXPECT_FALSE(helper.MergeDocumentFor奇偶排序(L"N", nullptr, false)); },
      [&] { EXPECT_FALSE(helper.SaveAsDocument(L"D", 0, true, 0, 0, L"\\o", L"", L"")); },
      [&] { EXPECT_TRUE(helper.DeletePage(L"\\m.tif", 1)); },
      [&] { EXPECT_TRUE(helper.CreateThumbnailImage(L"\\m.tif", 4)); },
      [&] { helper.Terminate(); },
  };
  for (const auto& operation : operations) {
    forgetCalls();
    operation();
    for (const RecordingEngine* engine : engines) {
      ASSERT_GE(engine->calls.size(), kClear.size());
      EXPECT_EQ(Calls(engine->calls.begin(), engine->calls.begin() + 3), kClear);
    }
  }
  forgetCalls();
  gBatchFolder = station.path(L"Batchs");
  helper.DeleteDocumentForDocumentID(L"D");
  EXPECT_EQ(helper.MakeOnlyOneFileName(L"D"), L"D");
  for (const RecordingEngine* engine : engines) EXPECT_TRUE(engine->calls.empty());
}

TEST_F(Component, AThumbnailGoesFromInstanceToInstance) {
  EXPECT_TRUE(helper.CreateThumbnailImage(L"\\x.tif", 4));
  const Calls page(engines[Control]->calls.begin() + 3, engines[Control]->calls.end());
  EXPECT_EQ(page,
            (Calls{"PageNumber 1", "SourceFile \\x.tif", "CopyDIB", "SourceFile", "Picture"}));
  const Calls thumbnail(engines[Crop]->calls.begin() + 3, engines[Crop]->calls.end());
  EXPECT_EQ(thumbnail, (Calls{"hDIB 77", "ResizeImage 250 150", "OutputType 8",
                              "TargetFile \\x.tif_B", "SaveFile", "SourceFile", "Picture"}));
}

TEST_F(Component, AFailedThumbnailCleansUpWithoutAWord) {
  const auto expectCleanedUp = [&] {
    for (const Engine engine : {Control, Crop}) {
      const Calls& calls = engines[engine]->calls;
      EXPECT_EQ(Calls(calls.end() - 2, calls.end()), (Calls{"SourceFile", "Picture"}));
    }
  };
  EXPECT_FALSE(helper.CreateThumbnailImage(L"\\x.tif", 0));
  expectCleanedUp();
  engines[Crop]->throwsAt = "ResizeImage";
  EXPECT_FALSE(helper.CreateThumbnailImage(L"\\x.tif", 4));
  expectCleanedUp();
  EXPECT_TRUE(station.logEntries().empty());
}

TEST_F(Component, AFailedResetIsLoggedByTerminateAlone) {
  engines[Merge]->throwsAt = "Refresh";
  EXPECT_FALSE(helper.DeletePage(L"\\m.tif", 1));
  EXPECT_TRUE(station.logEntries().empty());
  helper.Terminate();
  EXPECT_EQ(station.logEntries(),
            std::vector<std::wstring>{L"Orvane成果导出 - Orvane成果导出[DocumentHelper]:"
                                      L"Terminate-Err:broken"});
}

TEST(RealComponent, WritesAThumbnailOfPageOne) {
  const TempStation station;
  const std::string source = quoted(station.native("x.tif"));
  outputOf("convert -size 1003x603 xc:red -size 40x40 xc:blue -compress LZW " + source);
  DocumentHelper helper;
  EXPECT_TRUE(helper.CreateThumbnailImage(station.path(L"x.tif"), 4));
  EXPECT_EQ(outputOf("identify -format '%m %wx%h' " + quoted(station.native("x.tif_B"))),
            "JPEG 250x150");
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"x.tif"), 2000));
  EXPECT_FALSE(helper.CreateThumbnailImage(station.path(L"absent.tif"), 2));
  EXPECT_TRUE(station.logEntries().empty());
}

}  // namespace
}  // namespace orvane::test
