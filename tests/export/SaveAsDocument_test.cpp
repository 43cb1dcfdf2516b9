#include "export/SaveAsDocument.h"

#include <gtest/gtest.h>

#include "docstore/ScanTree.h"
#include "export/ExportStation.h"
#include "imaging/ImagingControl.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"

namespace orvane {
namespace {

using Files = std::set<std::string>;
const std::string kSource = "Orvane成果导出:DocumentHelper-SaveAsDocument-";

class SaveAsDocument : public testing::Test, protected ExportListener {
 protected:
  SaveAsDocument() {
    gBatchFolder = station.path(L"Batchs\\B1");
    window.onYield = [this] {
      if (!journal.ends_with("yield|")) journal += "yield|";
    };
  }

  bool save(bool isPageFile, const std::wstring& savePath, const std::wstring& stem = L"D1_",
            std::int16_t fileType = 0, const std::wstring& document = L"D1") {
    journal.clear();
    const mdlDocumentHelper::DocumentExport order{
        merge, *engine, pageCount, document, fileType, isPageFile, 0, 0, savePath, L"000", stem};
    return mdlDocumentHelper::SaveAsDocument(order, *this).ok;
  }

  void beginPage(int page, int pages) override {
    journal += std::to_string(page) + "/" + std::to_string(pages) + "|";
  }
  void addFile(const std::wstring& file, int pages) override {
    const std::string name = toUtf8(file.substr(file.find_last_of(L'\\') + 1));
    journal += name + " of " + std::to_string(pages) + "|";
  }
  void endPage() override {
    journal += "written|";
    if (afterPage) afterPage();
  }

  std::string journal;              // the steps, with one entry for the yields between two
  std::function<void()> afterPage;  // what happens to the disk meanwhile
  test::RecordingWindow window;
  test::ExportStation station;
  const std::wstring out = station.outputText();
  ImagingControl control;
  ImagingEngine* engine = &control;
  RecordingEngine merge, pageCount;
};

TEST_F(SaveAsDocument, WritesTheFilesOfEachFormUnderTheirNamesAndOverOlderOnes) {
  station.addDocument("B1/D1", {"A", "B", "A"});
  merge.imagError = 7;  // of an earlier operation
  const struct {
    std::int16_t fileType;
    bool isPageFile;
    std::string files, firstBytes, steps;
  } cases[] = {{0, true, "D1_001.tif D1_002.tif D1_003.tif", "II",
                "1/3|yield|D1_001.tif of 1|written|yield|2/3|yield|D1_002.tif of 1|written|yield|"
                "3/3|yield|D1_003.tif of 1|written|yield|"},
               {1, false, "D1_.jpg", "%P",
                "1/3|yield|written|yield|2/3|yield|written|yield|"
                "3/3|yield|D1_.jpg of 3|written|yield|"},
               {2, false, "D1_.pdf", "%P",
                "1/3|yield|written|yield|2/3|yield|written|yield|"
                "3/3|yield|D1_.pdf of 3|written|yield|"}};
  for (const auto& c : cases) {
    station.shell("rm -r output");
    for (const std::wstring& savePath : {out + L"\\\\sub.dir", out + L"\\sub.dir\\"}) {
      EXPECT_TRUE(save(c.isPageFile, savePath, L"D1_", c.fileType));
      EXPECT_EQ(journal, c.steps);
    }
    EXPECT_EQ(station.shell("cd output/sub.dir; ls | xargs; head -c 2 $(ls | head -1)"),
              c.files + "\n" + c.firstBytes);
  }
  EXPECT_EQ(station.shell("qpdf --show-npages output/sub.dir/D1_.pdf"), "3\n");
  // Without an output folder, the names begin at the root folder.
  station.shell("rm output/sub.dir/*");
  EXPECT_TRUE(save(false, L"", out.substr(1) + L"\\sub.dir\\D1_"));
  EXPECT_EQ(station.outputFiles(), (Files{"sub.dir/D1_.tif"}));
  EXPECT_EQ(station.takeLog(), "");
  EXPECT_EQ(control.SourceFile(), L"");
  EXPECT_EQ(merge.calls, (std::vector<std::string>{"SourceFile", "Refresh", "Picture"}));
  EXPECT_TRUE(pageCount.calls.empty());
}

TEST_F(SaveAsDocument, TheFileOfAFailedPageIsRemoved) {
  station.addDocument("B1/D1", {"A", "missing", "C"});
  station.shell("touch output/D1_002.tif output/other.tif");
  EXPECT_FALSE(save(true, out));
  EXPECT_EQ(station.outputFiles(), (Files{"D1_001.tif", "other.tif"}));
  EXPECT_TRUE(station.takeLog().ends_with("\n" + kSource + "按页保存时出错。页码：2\n"));
  EXPECT_FALSE(save(false, out));
  EXPECT_EQ(station.outputFiles(), (Files{"D1_001.tif", "other.tif"}));
  EXPECT_TRUE(station.takeLog().ends_with("\n" + kSource + "按多页文件保存时出错。页码：2\n"));
}

TEST_F(SaveAsDocument, AFolderThatReplacesTheOutputFolderDuringTheExportIsNotTouched) {
  station.addDocument("B1/D1", {"A", "B"});
  const struct {
    const char* command;
    std::vector<bool> isPageFile;
    std::string reason, left;  // "%" is the output folder
  } cases[] = {
      {"mv output aside; mv other output",
       {true, false},
       "输出文件夹已不是原来的那一个，不能导出：%\\",
       "output output/D1_.tif output/D1_002.tif"},
      {"mv output aside", {true, false}, "输出文件夹无法访问：%\\: No such file or directory", ""},
      {"rm output/D1_.tif", {false}, "%\\D1_.tif: No such file or directory", "output"}};
  for (const auto& c : cases) {
    for (const bool isPageFile : c.isPageFile) {
      station.shell(
          "rm -rf output aside other; mkdir output other; touch other/D1_.tif other/D1_002.tif");
      afterPage = [&] { station.shell(c.command); };
      EXPECT_FALSE(save(isPageFile, out));
      EXPECT_TRUE(journal.ends_with("written|yield|2/2|")) << journal;
      std::string reason = c.reason;
      reason.replace(reason.find('%'), 1, toUtf8(out));
      EXPECT_EQ(station.takeLog(), kSource + reason + "\n");
      EXPECT_EQ(station.shell("find output -size 0 -o -type d 2>&- | sort | xargs"), c.left + "\n");
    }
  }
}

TEST_F(SaveAsDocument, NorIsOneThatReplacesItWhileAPageIsLoaded) {
  station.addDocument("B1/D1", {"A"});
  RecordingEngine slow;
  engine = &slow;
  for (const auto& [command, left] :
       {std::pair{"mv output aside; mv other output", "output output/D1_.tif output/D1_001.tif"},
        {"mv output aside", ""}}) {
    for (const bool isPageFile : {true, false}) {
      station.shell(
          "rm -rf output aside other; mkdir output other; touch other/D1_.tif other/D1_001.tif");
      slow.onLoad = [&, disturbance = command] { station.shell(disturbance); };
      EXPECT_FALSE(save(isPageFile, out));
      EXPECT_NE(station.takeLog().find("mdlImageProcess-SaveImage-输出文件夹"), std::string::npos);
      EXPECT_EQ(slow.takeCalls().find("SaveFile"), std::string::npos);
      EXPECT_EQ(station.shell("find output -size 0 -o -type d 2>&- | sort | xargs"),
                left + std::string("\n"));
    }
  }
}

TEST_F(SaveAsDocument, WithoutAPageListOrAFolderNothingIsCreated) {
  EXPECT_FALSE(save(true, out + L"\\new"));
  station.addDocument("B1/D1", {});
  EXPECT_FALSE(save(true, out + L"\\new"));
  EXPECT_EQ(station.takeLog(),
            "Document:InitDocument-文档名【D1】找不到当前文档的数据文件【Doc.dat】\n"
            "Document:InitDocument-文档名【D1】 数据文件为空\n");
  EXPECT_EQ(station.shell("ls output"), "");
  station.write("Batchs/B1/D1/Doc.dat", "$$");
  EXPECT_TRUE(save(true, out + L"\\new")) << "a list without pages";
  EXPECT_EQ(station.shell("ls -F output"), "new/\n");

  station.shell("touch output/file");
  for (const bool isPageFile : {true, false}) {
    EXPECT_FALSE(save(isPageFile, out + L"\\file\\sub"));
    EXPECT_EQ(station.takeLog(), kSource + toUtf8(out) + "\\file: File exists\n");
  }
}

TEST_F(SaveAsDocument, NoOutputPathChangesTheScanTree) {
  station.addDocument("B1/D1", {"A", "B"});
  station.addDocument("B1/D2", {"A"});
  station.shell(
      "mv Batchs/B1/D2 output/disk2; ln -s ../../output/disk2 Batchs/B1/D2; cd output; "
      "ln -s ../Batchs link; ln -s link/B1/D1/A.tif D1_001.tif; "
      "ln -s link/B1/D1/new.tif D1_.tif; mkdir own");
  const std::string tree =
      "find . -name Log -prune -o -print; cat output/disk2/*; cat Batchs/B1/D1/*";
  const std::string before = station.shell(tree);
  const std::string inside = "输出位置在扫描件文件夹内，不能导出：";
  const struct {
    std::wstring savePath, stem;
    std::string reason;
  } cases[] = {{station.path(L"Batchs"), L"D1_", inside},
               {station.path(L"Batchs\\B1\\D1\\"), L"A", inside},
               {station.path(L"Batchs\\B2\\new"), L"x", inside},
               {station.path(L"nowhere\\..\\Batchs"), L"x", inside},
               {out + L"\\link\\B1\\D1", L"A", inside},
               {out + L"\\link\\B9", L"x", inside},
               {out, L"D1_", inside},
               {out, L"link\\B1\\D1\\A", inside},
               {out + L"\\own", L"../x", "输出文件不在输出文件夹内："},
               {out + L"\\own", L"a\\..\\..\\x", "输出文件不在输出文件夹内："}};
  for (const auto& c : cases) {
    for (const bool isPageFile : {true, false}) {
      EXPECT_FALSE(save(isPageFile, c.savePath, c.stem)) << toUtf8(c.savePath + L" " + c.stem);
      const std::string log = station.takeLog();
      EXPECT_TRUE(log.starts_with(kSource + c.reason)) << log;
      EXPECT_EQ(log.find('\n'), log.size() - 1);
    }
  }
  EXPECT_FALSE(save(false, out + L"\\disk2", L"A", 0, L"D2")) << "a document on another disk";
  EXPECT_EQ(station.shell(tree), before);

  station.shell("rm output/D1_*");  // a separator in a name may only lead to a sub-folder
  EXPECT_TRUE(save(true, out, L"D1\\p") && save(false, out, L"..D1.."));
  EXPECT_EQ(station.outputFiles(),
            (Files{"D1/p001.tif", "D1/p002.tif", "..D1...tif", "disk2/A.tif", "disk2/Doc.dat"}));
}

}  // namespace
}  // namespace orvane
