#include "export/RunOutPutBatch.h"

#include <gtest/gtest.h>

#include "batchdb/SqliteStore.h"
#include "export/WholeRun.h"
#include "foundation/Failure.h"
#include "foundation/FileSystemObject.h"
#include "foundation/mdlFolderAndFile.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Files = std::set<std::string>;
using test::joined;

class RunOutPutBatch : public test::WholeRun {};

TEST_F(RunOutPutBatch, OneBatchFromEndToEnd) {
  station.createTable({"B1"});
  station.addDocument("B1/D2", {"P"});
  station.addDocument("B1/D1", {"P1", "P2"});
  station.shell("mkdir Batchs/B1/empty; cp Batchs/B1/D1/P1.tif Batchs/B1/empty; touch Batchs/B1/x");
  const auto scans = station.scanTree();
  run();
  EXPECT_EQ(joined(host.journal),
            "btnRun off|buttons|line 档案：B1开始导出...|repaint|"
            "yield|line D1 导出成功！|put off|yield|repaint|yield|line D2 导出成功！|put off|yield|"
            "line 档案导出成果成功！|repaint|line  |yield|"
            "line  没有扫描完成的档案！|yield|btnRun on|buttons|");
  EXPECT_EQ(station.outputFiles(), (Files{"B1/D1-001.tif", "B1/D1-002.tif", "B1/D2-001.tif"}));
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|");
  EXPECT_EQ(station.scanTree(), scans);
  EXPECT_EQ(station.takeLog() + host.window.takeBoxes(), "");
}

TEST_F(RunOutPutBatch, AStationCopiedFromWindowsIsExportedAsItIs) {
  station.createTable({"b1", "B2"});
  for (const char* batch : {"B1/D1", "B2/D1"}) station.addDocument(batch, {"P1"});
  station.shell(
      "for b in Batchs/*; do echo 'p1$' > $b/D1/DOC.DAT; rm $b/D1/Doc.dat; mv $b/D1/P1.tif "
      "$b/D1/P1.TIF; done; mv Batchs/B2 b2; ln -s ../b2 Batchs/b2");  // one through a link
  const auto scans = station.scanTree();
  run();
  EXPECT_EQ(station.outputFiles(), (Files{"b1/D1-001.tif", "B2/D1-001.tif"}));

  station.createTable({"B2"});
  host.options.SavePath = station.path(L"b2\\D1");  // inside the scan tree, in another spelling
  host.stopAfterBatch = true;
  run();
  EXPECT_EQ(station.stateOf("B2"), "完成扫描|成果输出失败！");
  EXPECT_EQ(station.scanTree(), scans);
}

TEST_F(RunOutPutBatch, OutcomesOfABatch) {
  const std::string exported = "档案导出成果成功！| |";
  const std::string failed = "D1 导出成功！|D2 导出失败！| |";
  const std::string notUpdated = "D1 导出成功！|档案导出数字化成果失败！| |";
  const struct {
    std::vector<std::vector<std::string>> documents;  // the pages of D1, D2 ...
    bool batchFolder;
    std::string lines;
    bool isExported;
    Files files;
    std::string moreScans{}, reason{};
  } cases[] = {
      {{}, true, exported, true, {"B1/old"}},
      {{{" ", ""}}, true, "D1 导出成功！|" + exported, true, {"B1/old"}},  // without a page
      {{{"P"}}, false, "D1 导出成功！|" + exported, true, {"B1/old", "D1-001.tif"}},
      {{{"P"}, {"missing"}, {"P"}}, true, failed, false, {}},
      {{{"P"}, {"missing"}}, false, failed, false, {"B1/old", "D1-001.tif"}},
      {{{"P"}, {}}, true, failed, false, {}},  // an empty Doc.dat
      {{{"P"}}, true, failed, false, {}, "ln -s gone D2", "D2\\: No such file or directory"},
      {{{"P"}}, true, failed, false, {}, "ln -s D2 D2", "D2\\Doc.dat: Too many levels"},
      {{{"P"}}, true, failed, false, {}, "ln -s D1/P.tif/x D2", "D2\\Doc.dat: Not a directory"},
      {{{"P"}}, true, failed, false, {}, "mkdir D2; ln -s x D2/Doc.dat", "D2\\Doc.dat: No such"},
      {{{"P"}}, true, notUpdated, false, {"B1/D1-001.tif", "B1/old"}}};
  host.stopAfterBatch = true;
  for (const auto& c : cases) {
    station.shell(
        "rm -rf Batchs output/*; mkdir -p Batchs/B1/empty output/B1; touch output/B1/old");
    station.createTable({"B1"});
    if (c.lines == notUpdated) {
      station.query(
          "create trigger t before update of BatchState on T_BatchInfo "
          "begin select raise(fail, 'refused'); end");
    }
    for (std::size_t i = 0; i < c.documents.size(); ++i) {
      station.addDocument("B1/D" + std::to_string(i + 1), c.documents[i]);
    }
    station.shell("cd Batchs/B1; " + c.moreScans);
    const std::string tree = "find Batchs -printf '%p %l\\n' -type f -exec cat {} +";
    const std::string scans = station.shell(tree);
    host.options.IsCreateBatchFolder = c.batchFolder;
    EXPECT_EQ(run(), "档案：B1开始导出...|" + c.lines);
    EXPECT_EQ(host.journal.back(), "buttons");
    EXPECT_EQ(station.stateOf("B1"), c.isExported ? "完成成果输出|" : "完成扫描|成果输出失败！");
    EXPECT_EQ(station.outputFiles(), c.files);
    EXPECT_EQ(station.shell(tree), scans);
    EXPECT_NE(station.takeLog().find(c.reason), std::string::npos);
  }
}

TEST_F(RunOutPutBatch, ABatchKeepsToTheOutputFolderThatItBeganWith) {
  station.createTable({"B1", "B2", "B3"});
  for (const char* document : {"B1/D1", "B1/D2", "B2/D1", "B3/D1"}) {
    station.addDocument(document, {"P"});
  }
  station.shell("mkdir output/other");
  std::vector<std::wstring> chosen{L"", station.outputText() + L"\\none",
                                   station.outputText() + L"\\other"};
  host.whenLineAdded = [&](const std::string& line) {  // the operator chooses during a batch
    if (!line.starts_with("D1 ") || chosen.empty()) return;
    host.options.SavePath = chosen.front();
    chosen.erase(chosen.begin());
  };
  const std::string exported = "D1 导出成功！|档案导出成果成功！| |";
  const std::string failed = "档案：B2开始导出...|D1 导出失败！| |";
  EXPECT_EQ(run(), "档案：B1开始导出...|D1 导出成功！|D2 导出成功！|档案导出成果成功！| |" +
                       failed + failed + "档案：B2开始导出...|" + exported +
                       "档案：B3开始导出...|" + exported + " 没有扫描完成的档案！|");
  EXPECT_EQ(station.outputFiles(), (Files{"B1/D1-001.tif", "B1/D2-001.tif", "other/B2/D1-001.tif",
                                          "other/B3/D1-001.tif"}));
  const std::string source = "Orvane成果导出:RunOutPutBatch-";
  EXPECT_EQ(station.takeLog(), source + "成果输出文件夹不能为空！\n" + source +
                                   toUtf8(station.outputText()) +
                                   "\\none: No such file or directory\n");
}

TEST_F(RunOutPutBatch, ABatchWhoseNameIsNotAFolderNameCountsAsMissing) {
  station.shell("mkdir -p Batchs/B1; touch output/keep");
  host.stopAfterBatch = true;
  for (const std::string name : {"gone", "", ".", "..", "B1/", "../Batchs/B1", "B1\\", "..\\Log"}) {
    station.createTable({name});
    const std::string title = "档案：" + name;
    EXPECT_EQ(run(), title + "开始导出...|" + title + "处理失败【档案找不到！】...| |");
    EXPECT_EQ(station.stateOf(name), "完成扫描|档案扫描件找不到！");
    EXPECT_EQ(station.shell("ls output Batchs | xargs"), "Batchs: B1 output: keep\n");
  }
}

TEST_F(RunOutPutBatch, NeverDeletesTheProgramOrTheScans) {
  station.shell("ln -s ../Batchs output/link");
  const struct {
    std::wstring savePath;
    std::string batch;
  } cases[] = {
      {pathText(station.native().parent_path()), station.native().filename().string()},
      {station.path(), "Batchs"},       // the scan tree
      {station.path(L"Batchs"), "B1"},  // the batch's own scans
      {station.path(L"output\\link"), "B1"},
      {station.path(L"output"), "link"},
  };
  host.stopAfterBatch = true;
  for (const auto& c : cases) {
    SCOPED_TRACE(toUtf8(c.savePath) + " + " + c.batch);
    station.createTable({c.batch});
    station.addDocument(c.batch + "/D1", {"P", "missing"});
    const auto scans = station.scanTree();
    host.options.SavePath = c.savePath;
    EXPECT_EQ(run(), "档案：" + c.batch + "开始导出...|D1 导出失败！| |");
    EXPECT_EQ(station.scanTree(), scans);
    EXPECT_EQ(station.stateOf(c.batch), "完成扫描|成果输出失败！");
    EXPECT_TRUE(station.takeLog().ends_with(
        "\nOrvane成果导出:RunOutPutBatch-输出文件夹含有程序或扫描件，不删除：" +
        toUtf8(c.savePath) + "\\" + c.batch + "\n"));
    fs::remove_all(station.scan(c.batch));
  }
}

TEST_F(RunOutPutBatch, AFailureDeletesNoFileOfAnotherBatch) {
  struct StoresSmallLetters : FileSystemObject {  // and finds a name in any letter case
    std::vector<std::wstring> SubFolders(const std::wstring& path) override {
      auto names = FileSystemObject::SubFolders(path);
      if (path.ends_with(L"output")) names = {L"ab"};
      return names;
    }
  };
  const struct {
    bool storesSmallLetters;
    std::string before, reason;
  } cases[] = {{true, "mkdir AB; touch AB/old", "输出文件夹在磁盘上的名字与批次名写法不同"},
               {false, "mkdir ab; touch ab/old; ln -s ab AB",
                "输出文件夹里有本次导出的档案【ab】的文件，不删除："}};
  station.addDocument("ab/D1", {"P"});
  station.addDocument("AB/D2", {"P", "missing"});
  host.whenLineAdded = [&](const std::string& line) {
    if (line == "D2 导出失败！") host.setIsStopRequested(true);
  };
  for (const auto& c : cases) {
    station.shell("rm -rf Log output; mkdir output; cd output; " + c.before);
    station.createTable({"ab", "AB"});
    gFileSystem.reset(c.storesSmallLetters ? new StoresSmallLetters : nullptr);
    run();
    gFileSystem.reset();
    EXPECT_EQ(station.shell("cd output/AB; ls | grep -v D1 | xargs"), "D2-001.tif old\n");
    EXPECT_TRUE(fs::exists(station.output("ab/D1-001.tif")));
    EXPECT_NE(host.reasons.back().find("\n" + c.reason), std::string::npos);
    EXPECT_NE(station.shell("cat Log/*-*.txt").find("\tD2 导出失败；" + c.reason),
              std::string::npos);
    EXPECT_NE(station.takeLog().find("RunOutPutBatch-" + c.reason), std::string::npos);
  }
}

TEST_F(RunOutPutBatch, AnUnreadableFieldEndsTheRunAndResetsTheButtons) {
  const struct {
    std::string change, lines, reason;
  } cases[] = {{"PaperNum=null", "档案：B1开始导出...|", "the field PaperNum holds no value"},
               {"PaperNum='many'", "档案：B1开始导出...|", "not a number: \"many\""},
               {"PaperNum=40000", "档案：B1开始导出...|", "number outside -32768 to 32767"},
               {"BatchID=null", "档案：开始导出...|", "the field BatchID holds no value"}};
  for (const auto& c : cases) {
    station.createTable({"B1"});
    station.query("update T_BatchInfo set " + c.change);
    EXPECT_EQ(run(), c.lines);
    EXPECT_EQ(station.query("select BatchState, Remark is null from T_BatchInfo"), "完成扫描|1\n");
    const std::string text = "RunOutPutBatch Err:" + c.reason;
    EXPECT_EQ(host.window.takeBoxes(), text + " | Orvane成果导出[mdlDataBase] | !\n");
    EXPECT_EQ(station.takeLog(), "Orvane成果导出[mdlDataBase]:" + text + "\n");
    EXPECT_TRUE(joined(host.journal).ends_with("|btnRun on|buttons|"));
  }
}

TEST_F(RunOutPutBatch, InvalidOptionsStartNoRun) {
  const std::wstring none = station.outputText() + L"\\none";
  const struct {
    std::wstring savePath, width;
    std::string box;
  } cases[] = {{L"", L"3", "成果输出文件夹不能为空！ | 提醒 | !\n"},
               {none, L"3", "成果输出文件夹不存在！ | 提醒 | !\n"},
               {station.outputText(), L"32768",
                "RunOutPutBatch Err:number outside -32768 to 32767 | "
                "Orvane成果导出[mdlDataBase] | !\n"}};
  for (const auto& c : cases) {
    host.options.SavePath = c.savePath;
    host.pageNumberWidth = c.width;
    run();
    EXPECT_TRUE(host.journal.empty()) << "no button changes, no line is added";
    EXPECT_EQ(host.window.takeBoxes(), c.box);
  }
}

TEST_F(RunOutPutBatch, AMissingDatabaseEndsTheRunAfterOnePassAnUnreadableOneAfterThree) {
  for (const std::size_t passes : {1, 3}) {
    run();
    EXPECT_EQ(joined(host.journal), "btnRun off|buttons|yield|btnRun on|buttons|");
    EXPECT_EQ(std::exchange(host.window.boxes, {}).size(), passes * 2);
    station.write("Orvane.dll", "of another kind, and longer than the head of a database file");
  }
}

TEST_F(RunOutPutBatch, AStopEndsTheWaitForALockedDatabase) {
  station.createTable({"B1"});
  SqliteStore scanningStation;
  scanningStation.open(station.path(L"Orvane.dll"));
  scanningStation.execute(L"begin exclusive");
  int yields = 0;
  host.whenYielding = [&] {
    host.setIsStopRequested(true);
    if (++yields == 100) scanningStation.execute(L"rollback");  // the wait has ignored the stop
  };
  EXPECT_EQ(run(), "");
}

}  // namespace
}  // namespace orvane
