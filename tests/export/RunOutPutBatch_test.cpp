#include "export/RunOutPutBatch.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

#include "batchdb/SqliteStore.h"
#include "export/ExportStation.h"
#include "export/JournalHost.h"
#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "settings/ExportSettings.h"
#include "support/open_files.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Files = std::set<std::string>;

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += text + "|";
  return all;
}

class RunOutPutBatch : public testing::Test {
 protected:
  RunOutPutBatch() {
    host.options.SavePath = station.outputText();
    host.options.ReNameFormat = kNameOfDocumentAndPage;
    host.options.ReNameSp1 = L"-";
    host.options.ReNameSp2 = L"-";
    host.options.IsCreateBatchFolder = true;
  }
  // Runs until the operator stops the run or no batch is left, and returns the lines of the list.
  std::string run() {
    host.lines.clear();
    host.journal.clear();
    orvane::RunOutPutBatch(host);
    return joined(host.lines);
  }

  test::ExportStation station;
  test::JournalHost host;
};

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

TEST_F(RunOutPutBatch, FilesReplacedInTheSameRunOrLeftFromAnEarlierExportAreLogged) {
  const auto replaced = [](const std::string& batch, int count, const std::string& of) {
    return "档案【" + batch + "】替换了本次导出中已写出的 " + std::to_string(count) +
           " 个同名文件，第一个原是档案【" + of + "】的：";
  };
  const std::string left = "档案【B1】的成果文件夹里有 2 个文件不是这次写出的，第一个：";
  const struct {
    const wchar_t* pattern;
    bool batchFolder, isMutiPage;
    std::vector<std::pair<std::string, int>> documents;  // and page counts; 0: a missing page
    std::string before, afterFirst;                      // commands in the output folder
    std::string told, file;
  } cases[] = {
      {kNameOfDocument,
       false,
       false,
       {{"B1/D", 3}, {"B2/D", 2}},
       "",
       "",
       replaced("B2", 2, "B1"),
       "D001.tif"},
      {kNameOfDocument,
       false,
       true,
       {{"B1/D", 2}, {"B2/D", 2}},
       "",
       "",
       replaced("B2", 1, "B1"),
       "D.tif"},
      {kNameOfPage,
       true,
       false,
       {{"B1/D1", 2}, {"B1/D2", 3}},
       "",
       "",
       replaced("B1", 2, "B1"),
       "B1/001.tif"},
      {kNameOfDocument,
       false,
       false,
       {{"B1/ab", 1}, {"B2/cd", 1}},
       "",
       "[ -e cd001.tif ] || ln ab001.tif cd001.tif",
       replaced("B2", 1, "B1"),
       "cd001.tif"},
      // exFAT in user space finds a file in any letter case, with another inode for each spelling.
      {kNameOfDocument,
       false,
       false,
       {{"B1/ab", 1}, {"B2/AB", 1}},
       "",
       "[ -e AB001.tif ] || cp -p ab001.tif AB001.tif",
       replaced("B2", 1, "B1"),
       "AB001.tif"},
      // Older files and those of an earlier attempt at the same batch are not logged.
      {kNameOfDocument, false, false, {{"B1/D", 2}}, "touch D001.tif D002.tif", "", "", ""},
      {kNameOfDocument, false, false, {{"B1/D1", 1}, {"B1/D2", 0}}, "", "", "", ""},
      {kNameOfDocument, true, false, {{"B1/D1", 1}, {"B1/D2", 0}}, "", "", "", ""},
      // Logged once, however often the batch is tried again.
      {kNameOfDocument,
       false,
       false,
       {{"B1/D1", 1}, {"B2/D1", 1}, {"B2/D2", 0}},
       "",
       "",
       replaced("B2", 1, "B1"),
       "D1001.tif"},
      {kNameOfDocument,
       true,
       true,
       {{"B1/D", 1}},
       "mkdir -p B1/D/empty; touch B1/D/1.tif B1/E.tif",
       "",
       left,
       "B1/D/1.tif"},
      {kNameOfDocument,
       true,
       false,
       {{"B1/D", 1}},
       "mkdir B1; touch B1/D001.tif",
       "ln B1/D001.tif B1/d001.tif",
       "",
       ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    station.shell("rm -rf Batchs output/*; cd output; " + c.before);
    std::set<std::string> batches;
    for (const auto& [name, pages] : c.documents) {
      batches.insert(name.substr(0, 2));
      std::vector<std::string> names(std::max(pages, 1), pages == 0 ? "missing" : "P");
      station.addDocument(name, names);
    }
    station.createTable({batches.begin(), batches.end()});
    host.options.ReNameFormat = c.pattern;
    host.options.IsCreateBatchFolder = c.batchFolder;
    host.options.IsMutiPage = c.isMutiPage;
    int failures = 0;
    host.whenLineAdded = [&](const std::string& line) {
      if (line.ends_with("导出失败！") && ++failures == 3) host.setIsStopRequested(true);
      if (line.ends_with(" 导出成功！")) station.shell("cd output; " + c.afterFirst);
    };
    if (c.file == "AB001.tif") {
      host.whenYielding = [&] {
        station.shell("cd output; [ ! -e ab001.tif ] || cp -p ab001.tif AB001.TIF");
      };
    }
    host.reasons.clear();
    run();
    host.whenYielding = nullptr;
    std::string told = station.takeLog();
    told = std::regex_replace(told, std::regex("(.*mdlImageProcess.*|.*DocumentHelper.*)\n"), "");
    const std::string output = toUtf8(station.outputText());
    std::string file = c.file;
    std::replace(file.begin(), file.end(), '/', '\\');
    const std::string finding = c.told.empty() ? "" : c.told + output + "\\" + file;
    EXPECT_EQ(told, c.told.empty() ? "" : "Orvane成果导出:RunOutPutBatch-" + finding + "\n");
    // The line of the success has it too.
    const std::string summary = toUtf8(host.progress().summary());
    EXPECT_EQ(summary.find("⚠ 有 1 批") != summary.npos, !c.told.empty() && failures == 0);
    if (failures > 0) continue;
    ASSERT_EQ(host.reasons.size(), c.told.empty() ? 0u : 1u);
    if (c.told.empty()) continue;
    EXPECT_THAT(host.reasons[0],
                testing::StartsWith("这一批" + finding.substr(finding.find("】") + 3)));
  }
}

TEST_F(RunOutPutBatch, EachOfTwoFindingsThatRepeatIsLoggedOnce) {
  station.createTable({"B1"});
  station.query(
      "create trigger t before update of BatchState on T_BatchInfo "
      "begin select raise(fail, 'refused'); end");
  for (const char* document : {"B1/D1", "B1/D2"}) station.addDocument(document, {"P"});
  station.shell("mkdir output/B1; touch output/B1/old");
  host.options.ReNameFormat = kNameOfPage;
  int passes = 0;
  host.whenLineAdded = [&](const std::string& line) {
    if (line == " " && ++passes == 3) host.setIsStopRequested(true);
  };
  run();
  const std::string log = station.takeLog();
  for (const auto& [text, times] :
       {std::pair{"替换了", 1}, {"不是这次写出的", 1}, {"refused", 3}}) {
    int count = 0;
    for (auto at = log.find(text); at != log.npos; at = log.find(text, at + 1)) ++count;
    EXPECT_EQ(count, times) << log;
  }
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

TEST_F(RunOutPutBatch, ReportsItsProgressAndTheReasonsOfFailedLines) {
  station.createTable({"B1", "B2", "gone"});
  station.addDocument("B1/D1", {"P1", "P2"});
  station.addDocument("B2/D1", {"P1"});
  station.addDocument("B2/D2", {"P1", "missing"});
  std::string told, last;
  host.whenYielding = [&] {
    const auto waiting = mdlDataBase::waitingBatches();
    std::string text = toUtf8(host.runProgress.text(waiting, host.IsStopRequested()));
    text = text.substr(0, text.find("已用"));
    std::replace(text.begin(), text.end(), '\n', '|');
    if (text.find("磁盘") != text.npos) return;  // the number of these yields is not fixed
    if (text != last) told += (last = text) + "\n";
  };
  host.whenLineAdded = [&](const std::string& line) {
    if (line == "D2 导出失败！" && host.reasons.size() == 2) {
      station.query("update T_BatchInfo set BatchState='' where BatchID='B2'");
    }
    if (line.starts_with("档案：gone处理失败")) host.setIsStopRequested(true);
  };
  run();
  const std::string again = "这一批已经失败 1 次，正在重试。|";
  const auto attemptAtB2 = [](const std::string& retry) {
    std::string text;
    for (const char* step : {"1 件：第 1 页，共 1", "2 件：第 1 页，共 2", "2 件：第 2 页，共 2"}) {
      text += "正在导出档案【B2】的 D" + std::string(step) + " 页|" + retry +
              "已完成 1 批，还有 1 批等待导出|\n";
    }
    return text;
  };
  EXPECT_EQ(told,
            "正在导出档案【B1】的 D1 件：第 1 页，共 2 页|已完成 0 批，还有 2 批等待导出|\n"
            "正在导出档案【B1】的 D1 件：第 2 页，共 2 页|已完成 0 批，还有 2 批等待导出|\n"
            "正在向数据库查询下一批档案……|已完成 1 批，还有 2 批等待导出|\n" +
                attemptAtB2("") + "正在向数据库查询下一批档案……|已完成 1 批，还有 2 批等待导出|\n" +
                attemptAtB2(again) +
                "正在向数据库查询下一批档案……|已完成 1 批，还有 1 批等待导出|\n"
                "已完成 1 批，还有 1 批等待导出|\n");
  EXPECT_FALSE(host.runProgress.isRunning());

  const std::string scans = toUtf8(station.path(L"Batchs\\"));
  ASSERT_EQ(host.reasons.size(), 3u);
  EXPECT_EQ(host.reasons[0],
            "mdlImageProcess-SaveImage-" + scans +
                "B2\\D2\\missing.tif: No such file or directory ImgControl.ImagError =0\n"
                "DocumentHelper-SaveAsDocument-按页保存时出错。页码：2");
  EXPECT_EQ(host.reasons[1], host.reasons[0]);
  EXPECT_EQ(host.reasons[2], "没有这个文件夹：" + scans + "gone");
}

TEST(RunProgress, TheRemainingTimeIsShownOnceItCanBeEstimated) {
  const WaitingBatches none{.count = 4, .pages = {}};
  const auto pages = [](std::int64_t sum) { return WaitingBatches{.count = 4, .pages = sum}; };
  const struct {
    int seconds, donePages, PaperNum;  // of an exported batch
    int pages;                         // exported of the next batch, whose PaperNum is 500
    std::optional<WaitingBatches> waiting;
    bool isStopRequested;
    std::string times;
  } cases[] = {
      {59, 0, 0, 0, pages(900), false, "已用 59 秒"},
      {20, 5, 5, 4, pages(900), false, "已用 20 秒"},   // too few pages
      {4, 50, 50, 50, pages(900), false, "已用 4 秒"},  // too short a time
      {50, 0, 0, 10, pages(190), false, "已用 50 秒，全部做完还要大约 15 分钟"},
      {60, 5, 5, 5, pages(14), false, "已用 1 分 0 秒，全部做完还要不到 1 分钟"},
      {3723, 1000, 500, 0, pages(1000), false, "已用 1 小时 2 分，全部做完还要大约 2 小时 4 分"},
      {100, 50, 50, 50, none, false, "已用 1 分 40 秒"},
      {100, 50, 50, 50, std::nullopt, false, "已用 1 分 40 秒"},
      {100, 0, 0, 50, pages(50), false, "已用 1 分 40 秒"},  // more pages than in the table
      {100, 0, 0, 50, none, true, "已用 1 分 40 秒，这一批还要大约 15 分钟"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    RunProgress::Clock::time_point now{};
    RunProgress progress([&] { return now; });
    progress.beginRun();
    if (c.donePages > 0) progress.beginBatch(L"B1", c.PaperNum);
    for (int i = 0; i < c.donePages; ++i) progress.endPage();
    if (c.donePages > 0) progress.endBatch(true);
    progress.beginBatch(L"B2", 500);
    for (int i = 0; i < c.pages; ++i) progress.endPage();
    now += std::chrono::seconds(c.seconds);
    const std::string text = toUtf8(progress.text(c.waiting, c.isStopRequested));
    EXPECT_EQ(text.substr(text.find("已用")), c.times + "\n");
    progress.beginSync();
    EXPECT_TRUE(toUtf8(progress.text(c.waiting, c.isStopRequested))
                    .starts_with("档案【B2】的成果已写好，正在存到磁盘上……\n"));
    progress.endBatch(false);
    progress.beginBatch(L"B2", 500);  // a failing batch: no estimate is possible
    EXPECT_EQ(toUtf8(progress.text(c.waiting, c.isStopRequested)).find("还要"), std::string::npos);
  }
}

TEST(RunProgress, TheRemainingTimeFollowsTheLastMinute) {
  RunProgress::Clock::time_point now{};
  RunProgress progress([&] { return now; });
  const WaitingBatches waiting{.count = 1, .pages = 10'000};
  progress.beginRun();
  progress.beginBatch(L"B1", 10'000);
  const auto exportPages = [&](int pages, std::chrono::milliseconds each) {
    for (int i = 0; i < pages; ++i) {
      now += each;
      progress.endPage();
    }
    const std::string text = toUtf8(progress.text(waiting, false));
    return text.substr(text.find("还要"));
  };
  using std::chrono::milliseconds;
  EXPECT_EQ(exportPages(3900, milliseconds(10)), "还要大约 1 分钟\n");
  EXPECT_EQ(exportPages(60, milliseconds(1000)), "还要大约 1 小时 41 分\n");  // 6040 pages are left
  EXPECT_EQ(exportPages(12, milliseconds(30'000)), "还要大约 50 小时 14 分\n");  // 6028
  EXPECT_EQ(exportPages(4728, milliseconds(50)), "还要大约 1 分钟\n");           // 1300
}

TEST_F(RunOutPutBatch, TheSummaryTellsHowTheRunEnded) {
  const auto summary = [&] {
    return std::regex_replace(toUtf8(host.progress().summary()),
                              std::regex("[0-9-]{10} [0-9:]{5}|，用时 [0-9]+ 秒"), "");
  };
  const std::string all = "：\n已导出 2 批，3 件，4 页\n", one = "：\n已导出 1 批，2 件，3 页\n";
  station.addDocument("B1/D1", {"P"});
  station.addDocument("B1/D2", {"P", "P"});
  station.addDocument("B2/D1", {"P"});
  station.createTable({"B1", "B2"});
  EXPECT_EQ(summary(), "");
  host.whenYielding = [&] { EXPECT_EQ(summary(), "") << "there is a progress instead"; };
  run();
  EXPECT_EQ(summary(), "上次导出于  全部做完" + all);

  station.createTable({"B1", "B2"});
  host.stopAfterBatch = true;
  run();
  EXPECT_EQ(summary(), "上次导出于  按“停止”停下" + one);

  host.stopAfterBatch = false;
  station.createTable({"B1", "B2"});
  station.query("update T_BatchInfo set PaperNum = null where BatchID = 'B2'");
  run();
  EXPECT_EQ(summary(), "上次导出于  因出错停下（原因见日志，Ctrl+L）" + one);

  station.createTable({"B1", "gone"});
  int lines = 0;
  host.whenLineAdded = [&](const std::string& line) {
    if (line.starts_with("档案：gone处理失败") && ++lines == 3) host.setIsStopRequested(true);
  };
  run();
  EXPECT_EQ(summary(), "上次导出于  按“停止”停下" + one + "⚠ 档案【gone】失败了 3 次，没有导出\n");
}

// What a run leaves that the operator or a later run can see.
struct Trace {
  std::map<std::string, std::string> files;
  std::string list, log, states, next;
  bool operator==(const Trace&) const = default;
};

void PrintTo(const Trace& trace, std::ostream* stream) {
  *stream << trace.list << "\n" << trace.log << trace.states;
  for (const auto& [name, bytes] : trace.files) {
    *stream << name << " " << bytes.size() << " " << std::hash<std::string>()(bytes) << "\n";
  }
}

class RunWithWorkers : public testing::Test {
 protected:
  // Pages of every kind, one page damaged, one missing and one that promises more rows than it has.
  RunWithWorkers() {
    station.shell(R"(mkdir p && cd p
      draw() { convert -size 203x151 gradient:black-white -fill white -draw 'circle 60,60 60,20' \
        -density 150 -units PixelsPerInch "$@"; }
      colour='+level-colors red,blue -depth'
      draw -type bilevel -compress Group4 g4.tif
      draw -alpha off -depth 1 -type bilevel -compress LZW lzw1.tif
      draw -depth 8 -type grayscale gray.tif
      draw -depth 16 -type grayscale -compress Zip gray16.tif
      draw $colour 8 -type TrueColor -compress JPEG -quality 95 jpeg.tif
      draw $colour 16 -type TrueColor -compress LZW rgb16.tif
      draw $colour 8 -type Palette -compress LZW palette.tif
      draw $colour 8 -colorspace CMYK -compress LZW cmyk.tif
      cp g4.tif early.tif && tiffset -s 278 160 early.tif && tiffset -s 257 160 early.tif
      cp g4.tif bad.tif && dd if=/dev/zero of=bad.tif bs=1 seek=40 count=60 conv=notrunc status=none
      document() { mkdir -p ../good/$1; name=$1; shift
        for page; do [ $page = missing ] || cp $page.tif ../good/$name; printf "$page$" >>../good/$name/Doc.dat; done; }
      document Good/D1 g4 lzw1 gray
      document Good/D2 jpeg rgb16 gray16
      document Good/D3 palette early
      document Good/D4 cmyk g4 jpeg
      document Damaged/D1 lzw1 jpeg
      document Damaged/D2 g4 bad gray jpeg
      document Damaged/D3 g4
      document Missing/D1 gray
      document Missing/D2 g4 jpeg missing lzw1
      document Missing/D3 g4
      find ../good -exec touch -d '1 hour ago' {} +)");
  }

  Trace run(const ExportSettings& options, unsigned workers) {
    test::JournalHost host(workers);
    host.options = options;
    host.stopAfterBatch = true;
    host.whenLineAdded = [&](const std::string& line) {
      if (line != "D2 导出成功！") return;
      if (workers > 0) test::waitUntilOpen("Good/D3/palette.tif");
      station.shell("cp p/gray.tif Batchs/Good/D3/palette.tif");
    };
    Trace trace;
    station.shell("rm -rf output Batchs && mkdir output && cp -a good Batchs");
    for (const char* batch : {"Good", "Damaged", "Missing"}) {
      station.createTable({batch});
      orvane::RunOutPutBatch(host);
      trace.states += station.stateOf(batch) + "\n";
    }
    trace.list = joined(host.lines) + joined(host.reasons);
    trace.log = station.takeLog();
    trace.files = station.outputTree();
    // The settings that the instance is left with decide what one more save makes.
    ImagingEngine& engine = host.imaging().ImgControl;
    for (const wchar_t* page : {L"p\\jpeg.tif", L"p\\g4.tif"}) {
      engine.SourceFile(station.path(page));
      engine.TargetFile(station.path(L"next"));
      engine.SaveFile();
      trace.next += station.read("next");
    }
    return trace;
  }

  test::ExportStation station;
};

TEST_F(RunWithWorkers, LeavesWhatARunWithoutThemLeaves) {
  const struct {
    std::int16_t fileType;
    bool multiPage;
    std::int16_t compressionType, ratios;
  } forms[] = {
      {0, true, 0, 0}, {0, false, 1, 0}, {1, false, 0, 1}, {2, true, 0, 1}, {2, false, 1, 2}};
  for (const auto& [fileType, multiPage, compressionType, ratios] : forms) {
    ExportSettings options;
    options.SavePath = station.outputText();
    options.ReNameFormat = kNameOfDocumentAndPage;
    options.SaveFileType = fileType;
    options.IsMutiPage = multiPage;
    options.CompressionType = compressionType;
    options.CompressionRatios = ratios;
    const Trace alone = run(options, 0);
    EXPECT_EQ(alone.states, "完成成果输出|\n完成扫描|成果输出失败！\n完成扫描|成果输出失败！\n");
    EXPECT_NE(alone.log.find("图像数据提前结束"), std::string::npos) << alone.log;
    for (const unsigned workers : {1U, 2U, 4U}) {
      SCOPED_TRACE(std::to_string(workers) + " workers");
      EXPECT_EQ(run(options, workers), alone);
    }
  }
}

TEST_F(RunOutPutBatch, AReportHasARowForEachDocumentAndASumForEachBatch) {
  const auto report = [&] {
    const std::string text = station.shell(
        "cat Log/*-*.txt | sed 's/\t[0-9]*\\.[0-9]*\t/\t秒\t/; s/\\r$//' | tr '\\t' '|'");
    return std::regex_replace(text, std::regex("\\|mdlImage.*；Doc.*"), "|……");
  };
  const auto bytes = [&](const std::string& files) {
    return "|" + std::to_string(std::stoi(station.shell("cat output/" + files + " | wc -c"))) + "|";
  };
  station.createTable({"B1", "B2", "B\t3"});
  station.addDocument("B1/D1", {"P1", "P2"});
  station.addDocument("B1/D2", {" "});  // without a page
  station.addDocument("B2/D1", {"P1"});
  station.addDocument("B2/D2", {"P1", "missing"});
  int failures = 0;
  std::string ofB1, firstRows;
  host.whenLineAdded = [&](const std::string& line) {
    if (line == "档案导出成果成功！" && ofB1.empty()) ofB1 = bytes("B1/D1*");
    if (line == "D2 导出成功！" && firstRows.empty()) firstRows = report();  // during the run
    if (line == "D2 导出失败！" && ++failures == 13) {
      station.addDocument("B2/D2", {"P1", "P2"});
    }
    if (line.find("处理失败") != line.npos) host.setIsStopRequested(true);
  };
  run();
  const std::string ofPage = bytes("B2/D1*"), fails = "B2|合计|||||失败|同样的失败又发生了 ";
  const std::string firstDocuments = "档案|档案（件）|页数|文件数|字节数|秒|结果|原因\nB1|D1|2|2" +
                                     ofB1 + "秒|成功|\nB1|D2|0|0|0|秒|成功|\n";
  EXPECT_EQ(firstRows, firstDocuments);
  EXPECT_EQ(report(), firstDocuments + "B1|合计|2|2" + ofB1 + "秒|成功|\nB2|D1|1|1" + ofPage +
                          "秒|成功|\nB2|D2|1|1" + ofPage + "秒|失败|……\n" +
                          "B2|合计|0|0|0|秒|失败|D2 导出失败；这一批的成果文件夹已删除\n" + fails +
                          "1 次\n" + fails + "10 次\n" + fails + "12 次\nB2|D1|1|1" + ofPage +
                          "秒|成功|\nB2|D2|2|2" + bytes("B2/D2*") + "秒|成功|\nB2|合计|3|3" +
                          bytes("B2/*") + "秒|成功|\nB 3|合计|0|0|0|秒|失败|没有这个文件夹：" +
                          toUtf8(station.path(L"Batchs\\B 3")) + "\n");
  EXPECT_EQ(
      station.shell("file -b --mime-encoding Log/*.txt; cat Log/*.txt | tr -cd '\\r' | wc -c"),
      "utf-8\n14\n");
}

TEST_F(RunOutPutBatch, AReportThatCannotBeWrittenIsLoggedOnceAndFailsNothing) {
  struct NoReports : FileSystemObject {
    void AppendFile(const std::wstring& path, std::string_view bytes) override {
      if (path.ends_with(L".txt")) throw Failure("no space");
      FileSystemObject::AppendFile(path, bytes);
    }
  };
  gFileSystem = std::make_unique<NoReports>();
  station.createTable({"B1", "B2"});
  for (const char* document : {"B1/D1", "B1/D2", "B2/D1"}) station.addDocument(document, {"P"});
  run();
  gFileSystem.reset();
  EXPECT_EQ(station.query("select distinct BatchState from T_BatchInfo"), "完成成果输出\n");
  EXPECT_EQ(station.takeLog(), "Orvane成果导出:RunOutPutBatch-导出清单写不出来：no space\n");
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

// The patterns are tested through the window's preview and through the runs above.
TEST(OutputNaming, FoldersAreJoinedWithoutNormalisation) {
  EXPECT_EQ(documentStem(L"页码 ", L"B1", L"v1.D", L"-", L"_"), L"") << "no pattern";
  EXPECT_EQ(batchOutputFolder(L"D:\\Out\\", true, L"B1"), L"D:\\Out\\\\B1");
  EXPECT_EQ(batchOutputFolder(L"D:\\Out", true, L"B1"), L"D:\\Out\\B1");
  // Below the root folder there is no doubled separator, which would make "B1" a server.
  EXPECT_EQ(docOutputFolder(batchOutputFolder(L"\\", true, L"B1"), true, L"D1"), L"\\B1\\D1");
  EXPECT_EQ(docOutputFolder(batchOutputFolder(L"\\", false, L"B1"), true, L"D1"), L"\\D1");
}

// An example as "batch/document/page = batch/document/page".
std::string shown(const NameCollision& example) {
  const auto page = [](const PageToName& p) {
    return p.batch + L"/" + p.document + L"/" + std::to_wstring(p.page);
  };
  return toUtf8(page(example.first) + L" = " + page(example.second)) + "|";
}

TEST(OutputNaming, CollisionsAreFoundBeforeARun) {
  const std::string sameDocuments = "2024-0001/0001/1 = 2024-0002/0001/1|";
  const std::string sameNumbers = "2024-0001/0001/1 = 2024-0001/0002/1|";
  const struct {
    std::wstring pattern, sp1, sp2, digits;
    bool batchFolder, docFolder, isMutiPage;
    std::string examples;
  } cases[] = {
      {kNameOfDocument, L"-", L"-", L"3", false, false, false, sameDocuments},
      {kNameOfDocument, L"-", L"-", L"3", false, true, true, sameDocuments},
      {kNameOfDocument, L"-", L"-", L"3", true, false, false, ""},
      {kNameOfDocument, L"-", L"-", L"0", true, false, false, "2024-0001/1/11 = 2024-0001/11/1|"},
      {kNameOfDocument, L"-", L"-", L"2", true, false, false, "2024-0001/1/101 = 2024-0001/11/1|"},
      {kNameOfDocument, L"-", L"-", L"0", true, true, false, ""},
      {kNameOfDocument, L"-", L"-", L"0", true, false, true, ""},
      {kNameOfPage, L"-", L"-", L"3", true, false, false, sameNumbers},
      {kNameOfPage, L"-", L"-", L"3", false, false, false, sameNumbers + sameDocuments},
      {kNameOfPage, L"-", L"-", L"0", true, true, false, ""},
      {L"", L"-", L"-", L"3", true, false, true, sameNumbers},
      {kNameOfDocumentAndPage, L"-", L"-", L"0", true, false, false, ""},
      {kNameOfDocumentAndPage, L"-", L"", L"0", true, false, false,
       "2024-0001/1/11 = 2024-0001/11/1|"},
      {kNameOfDocumentAndPage, L"-", L"0", L"0", true, false, false,
       "2024-0001/1/101 = 2024-0001/101/1|"},
      {kNameOfBatchAndDocument, L"-", L"-", L"3", false, false, false, ""},
      {kNameOfBatchAndDocument, L"", L"-", L"3", false, false, true, "1/11/1 = 11/1/1|"},
      {kNameOfBatchAndDocument, L"", L"-", L"0", false, true, false, "1/1/11 = 11/1/1|"},
      {kNameOfBatchDocumentAndPage, L"-", L"-", L"0", false, false, false, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    ExportSettings settings;
    settings.SavePath = L"\\out\\";
    settings.ReNameSp1 = c.sp1;
    settings.ReNameSp2 = c.sp2;
    settings.IsCreateBatchFolder = c.batchFolder;
    settings.IsCreateDocFolder = c.docFolder;
    settings.IsMutiPage = c.isMutiPage;
    const std::wstring mask = pageNumberMask(c.digits);
    std::string examples;
    for (const NameCollision& example : nameCollisions(settings, c.pattern, mask)) {
      examples += shown(example);
      EXPECT_EQ(outputFile(settings, c.pattern, mask, example.first),
                outputFile(settings, c.pattern, mask, example.second));
    }
    EXPECT_EQ(examples, c.examples);
    EXPECT_EQ(collisionWarning(settings, c.pattern, mask).empty(), c.examples.empty());
  }
}

TEST(OutputNaming, PageNumbersArePaddedAndNeverCut) {
  const std::pair<std::wstring, std::size_t> masks[] = {
      {L"3", 3},   {L"0", 0},   {L"-2", 0},   {L"abc", 0},       {L"", 0},
      {L"2.5", 2}, {L"3.5", 4}, {L"  4x", 4}, {L"32767", 32767}, {L"1e1", 10},
      {L".6", 1},  {L"+2", 2},  {L"-0.5", 0}};
  for (const auto& [text, width] : masks) {
    EXPECT_EQ(pageNumberMask(text), std::wstring(width, L'0')) << width;
  }
  for (const wchar_t* text : {L"32768", L"-32769", L"1e9", L"1e400"}) {
    EXPECT_ANY_THROW(pageNumberMask(text));
  }
  EXPECT_EQ(pageNumberText(7, L""), L"7");
  EXPECT_EQ(pageNumberText(7, L"000"), L"007");
  EXPECT_EQ(pageNumberText(1000, L"000"), L"1000");
}

}  // namespace
}  // namespace orvane
