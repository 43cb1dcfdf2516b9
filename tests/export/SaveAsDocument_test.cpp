#include "export/SaveAsDocument.h"

#include <gtest/gtest.h>

#include "docstore/ScanTree.h"
#include "export/ExportStation.h"
#include "imaging/ImagingControl.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

class SaveAsDocument : public testing::Test {
 protected:
  SaveAsDocument() { gBatchFolder = station.path(L"Batchs\\B1"); }

  bool save(bool isPageFile, const std::wstring& savePath, const std::wstring& stem = L"D1_",
            std::int16_t fileType = 0) {
    return mdlDocumentHelper::SaveAsDocument(merge, control, pageCount, L"D1", fileType, isPageFile,
                                             0, 0, savePath, L"000", stem);
  }
  std::string entry(std::size_t index) const {
    const auto entries = station.logEntries();
    return index < entries.size() ? toUtf8(entries[index]) : "no such entry";
  }

  test::RecordingWindow window;
  test::ExportStation station;
  ImagingControl control;
  RecordingEngine merge, pageCount;
};

TEST_F(SaveAsDocument, WritesTheFilesOfEachFormUnderTheirNames) {
  station.addDocument("B1/D1", {"A", "B", "C"});
  const struct {
    std::int16_t fileType;
    bool isPageFile;
    std::size_t files;
    std::string first, content;
  } cases[] = {{0, true, 3, "D1_001.tif", "II*"},  {1, true, 3, "D1_001.jpg", "\xFF\xD8"},
               {2, true, 3, "D1_001.pdf", "%PDF"}, {0, false, 1, "D1_.tif", "II*"},
               {1, false, 1, "D1_.jpg", "%PDF"},   {2, false, 1, "D1_.pdf", "%PDF"}};
  for (const auto& c : cases) {
    const std::string folder = "deep." + std::to_string(c.fileType) + (c.isPageFile ? "p" : "m");
    const std::wstring savePath = station.outputText() + L"\\\\" + fromUtf8(folder);
    window.yields = 0;
    EXPECT_TRUE(save(c.isPageFile, savePath, L"D1_", c.fileType)) << folder;
    EXPECT_EQ(window.yields, 6) << "one in the saver and one behind each page";
    EXPECT_TRUE(save(c.isPageFile, savePath + L"\\", L"D1_", c.fileType)) << "over the first";
    std::size_t files = 0;
    for (const std::string& name : station.outputFiles()) files += name.rfind(folder, 0) == 0;
    EXPECT_EQ(files, c.files) << folder;
    const std::string bytes = test::readBytes(station.output(folder + "/" + c.first));
    EXPECT_EQ(bytes.rfind(c.content, 0), 0u) << folder;
  }
  EXPECT_TRUE(station.logEntries().empty());
  EXPECT_EQ(control.SourceFile(), L"");
}

TEST_F(SaveAsDocument, PagesOfAMultiPageFileKeepTheirOrderAndNumber) {
  station.addDocument("B1/D1", {"A", "B", "A"});
  ASSERT_TRUE(save(false, station.outputText()));
  ASSERT_TRUE(save(false, station.outputText()));
  const std::string info = test::outputOf("tiffinfo " + test::quoted(station.output("D1_.tif")));
  for (const char* page : {"Page Number: 0-", "Page Number: 1-", "Page Number: 2-"}) {
    EXPECT_NE(info.find(page), std::string::npos) << info;
  }
  EXPECT_EQ(info.find("Page Number: 3-"), std::string::npos) << "the first page starts anew";
}

TEST_F(SaveAsDocument, AFailedPageTakesItsFileWithIt) {
  station.addDocument("B1/D1", {"A", "missing", "C"});
  const struct {
    bool isPageFile;
    std::set<std::string> left;
    std::string text;
  } cases[] = {{true, {"D1_001.tif", "other.tif"}, "按页保存时出错。页码：2"},
               {false, {"other.tif"}, "按多页文件保存时出错。页码：2"}};
  for (const auto& c : cases) {
    for (const char* name : {"D1_002.tif", "D1_.tif", "other.tif"}) {
      test::writeBytes(station.output(name), "older");
    }
    fs::remove(station.output(c.isPageFile ? "D1_.tif" : "D1_002.tif"));
    fs::remove_all(station.native("Log"));
    EXPECT_FALSE(save(c.isPageFile, station.outputText()));
    EXPECT_EQ(station.outputFiles(), c.left);
    EXPECT_EQ(entry(1), "Orvane成果导出 - Orvane成果导出:DocumentHelper-SaveAsDocument-" + c.text);
    fs::remove(station.output("D1_001.tif"));
  }
}

TEST_F(SaveAsDocument, WithoutAPageListNothingIsMade) {
  const std::wstring target = station.outputText() + L"\\new";
  EXPECT_FALSE(save(true, target));
  station.addDocument("B1/D1", {});
  EXPECT_FALSE(save(true, target)) << "an empty list";
  EXPECT_FALSE(fs::exists(station.output("new")));
  EXPECT_EQ(station.logEntries().size(), 2u) << "the lines of the page list alone";
  test::writeBytes(station.scan("B1/D1/Doc.dat"), "$$");
  EXPECT_TRUE(save(true, target)) << "a list without pages";
  EXPECT_TRUE(fs::is_empty(station.output("new")));
}

TEST_F(SaveAsDocument, AFolderThatCannotBeMadeIsLoggedWithItsReason) {
  station.addDocument("B1/D1", {"A"});
  test::writeBytes(station.output("file"), "in the way");
  for (const bool isPageFile : {true, false}) {
    EXPECT_FALSE(save(isPageFile, station.outputText() + L"\\file\\sub"));
  }
  EXPECT_EQ(station.outputFiles(), std::set<std::string>{"file"});
  for (const std::size_t i : {0u, 1u}) {
    EXPECT_EQ(entry(i).rfind("Orvane成果导出 - Orvane成果导出:DocumentHelper-SaveAsDocument-", 0),
              0u);
    EXPECT_NE(entry(i).find("file: File exists"), std::string::npos) << entry(i);
  }
}

TEST_F(SaveAsDocument, ClearsTheTwoOtherInstancesOnlyAfterAnError) {
  station.addDocument("B1/D1", {"A"});
  merge.imagError = 7;
  EXPECT_TRUE(save(true, station.outputText()));
  EXPECT_EQ(merge.calls, (std::vector<std::string>{"SourceFile", "Refresh", "Picture"}));
  EXPECT_TRUE(pageCount.calls.empty());
}

TEST_F(SaveAsDocument, TheScanTreeIsSafeFromEveryOutputPlace) {
  station.addDocument("B1/D1", {"A", "B"});
  station.addDocument("B1/D2", {"A"});
  fs::rename(station.scan("B1/D2"), station.output("disk2"));
  fs::create_directory_symlink(station.output("disk2"), station.scan("B1/D2"));
  fs::create_directory_symlink(station.native("Batchs"), station.output("link"));
  fs::create_symlink(station.scan("B1/D1/A.tif"), station.output("D1_001.tif"));
  fs::create_symlink(station.scan("B1/D1/new.tif"), station.output("D1_.tif"));
  fs::create_directory(station.output("own"));
  const auto before = station.scanTree();
  const std::wstring out = station.outputText();
  const struct {
    std::wstring savePath, stem;
    std::string reason;
  } cases[] = {
      {station.path(L"Batchs"), L"D1_", "在扫描件文件夹内"},
      {station.path(L"Batchs\\B1\\D1\\"), L"A", "在扫描件文件夹内"},
      {station.path(L"Batchs\\B2\\new"), L"D1_", "在扫描件文件夹内"},
      {station.path(L"nowhere\\..\\Batchs"), L"D1_", "在扫描件文件夹内"},
      {out + L"\\link\\B1\\D1", L"A", "在扫描件文件夹内"},
      {out + L"\\link\\B9", L"D1_", "在扫描件文件夹内"},
      {out, L"D1_", "在扫描件文件夹内"},
      {out, L"link\\B1\\D1\\A", "在扫描件文件夹内"},
      {out + L"\\own", L"../x", "不在输出文件夹内"},
      {out + L"\\own", L"..\\x", "不在输出文件夹内"},
      {out + L"\\own", L"a\\..\\..\\x", "不在输出文件夹内"},
  };
  for (const auto& c : cases) {
    for (const bool isPageFile : {true, false}) {
      fs::remove_all(station.native("Log"));
      EXPECT_FALSE(save(isPageFile, c.savePath, c.stem)) << toUtf8(c.savePath + L" " + c.stem);
      EXPECT_NE(entry(0).find(c.reason), std::string::npos) << entry(0);
      EXPECT_EQ(station.logEntries().size(), 1u);
    }
  }
  gBatchFolder = station.path(L"Batchs\\B1");
  EXPECT_FALSE(mdlDocumentHelper::SaveAsDocument(merge, control, pageCount, L"D2", 0, false, 0, 0,
                                                 out + L"\\disk2", L"", L"A"))
      << "a document that is a link to another disk";
  EXPECT_EQ(station.scanTree(), before);
  EXPECT_TRUE(fs::exists(station.output("disk2/A.tif")));
  EXPECT_FALSE(fs::exists(station.output("x001.tif")));
}

TEST_F(SaveAsDocument, ASeparatorInANameLeadsDeeperAndNoFurther) {
  station.addDocument("B1/D1", {"A"});
  EXPECT_TRUE(save(true, station.outputText(), L"D1\\p"));
  EXPECT_TRUE(save(false, station.outputText(), L"..D1.."));
  EXPECT_EQ(station.outputFiles(), (std::set<std::string>{"D1/p001.tif", "..D1...tif"}));
}

}  // namespace
}  // namespace orvane
