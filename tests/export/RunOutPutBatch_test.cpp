#include "export/RunOutPutBatch.h"

#include <gtest/gtest.h>

#include "export/ExportStation.h"
#include "export/JournalHost.h"
#include "settings/NamingPattern.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

class RunOutPutBatch : public testing::Test {
 protected:
  RunOutPutBatch() {
    frmMain.options.SavePath = station.outputText();
    frmMain.options.ReNameFormat = kNameOfDocumentAndPage;
    frmMain.options.ReNameSp1 = L"-";
    frmMain.options.ReNameSp2 = L"-";
  }
  void run() {
    frmMain.lines.clear();
    frmMain.journal.clear();
    orvane::RunOutPutBatch(frmMain);
  }

  test::ExportStation station;
  test::JournalHost frmMain;
};

TEST_F(RunOutPutBatch, OneBatchFromEndToEnd) {
  station.createTable({"B1"});
  station.addDocument("B1/D2", {"P"});
  station.addDocument("B1/D1", {"P1", "P2"});
  test::writeBytes(station.scan("B1/empty/page.tif"), test::ExportStation::grayPage());
  test::writeBytes(station.scan("B1/file.txt"), "no folder");
  const auto scans = station.scanTree();
  frmMain.options.IsCreateBatchFolder = true;
  run();
  EXPECT_EQ(frmMain.journal, (Texts{"btnRun off",
                                    "buttons",
                                    "line 档案：B1开始导出...",
                                    "repaint",  //
                                    "yield",
                                    "yield",
                                    "yield",
                                    "yield",  // two pages
                                    "line D1 导出成功！",
                                    "repaint",
                                    "yield",  //
                                    "yield",
                                    "yield",  // one page
                                    "line D2 导出成功！",
                                    "repaint",
                                    "yield",  //
                                    "line 档案导出成果成功！",
                                    "repaint",
                                    "line  ",
                                    "yield",  //
                                    "line  没有扫描完成的档案！",
                                    "yield",
                                    "btnRun on",
                                    "buttons"}));
  EXPECT_EQ(station.outputFiles(),
            (std::set<std::string>{"B1/D1-001.tif", "B1/D1-002.tif", "B1/D2-001.tif"}));
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|");
  EXPECT_EQ(station.scanTree(), scans);
  EXPECT_TRUE(station.logEntries().empty());
  EXPECT_TRUE(frmMain.window.boxes.empty());
}

TEST_F(RunOutPutBatch, AStationCopiedFromWindowsIsExportedAsItLies) {
  station.createTable({"b1", "B2"});
  for (const char* batch : {"B1", "B2"}) {
    const fs::path folder = station.scan(batch + std::string("/D1"));
    test::writeBytes(folder / "DOC.DAT", "p1$");
    test::writeBytes(folder / "P1.TIF", test::ExportStation::grayPage());
  }
  fs::rename(station.scan("B2"), station.native("b2"));  // it lies elsewhere, by way of a link
  fs::create_directory_symlink("../b2", station.scan("b2"));
  frmMain.options.IsCreateBatchFolder = true;
  const auto scans = station.scanTree();
  run();
  EXPECT_EQ(station.outputFiles(), (std::set<std::string>{"b1/D1-001.tif", "B2/D1-001.tif"}));

  station.createTable({"B2"});
  frmMain.options.SavePath = station.path(L"b2\\D1");  // among the scans, whatever their name
  frmMain.stopAfterBatch = true;
  run();
  EXPECT_EQ(station.stateOf("B2"), "完成扫描|成果输出失败！");
  EXPECT_EQ(station.scanTree(), scans);
}

TEST_F(RunOutPutBatch, OutcomesOfABatch) {
  const Texts exported{"D1 导出成功！", "档案导出成果成功！", " "};
  const Texts failed{"D1 导出成功！", "D2 导出失败！", " "};
  const Texts notUpdated{"D1 导出成功！", "档案导出数字化成果失败！", " "};
  const struct {
    const char* what;
    std::map<std::string, Texts> documents;
    bool batchFolder;
    const char* sql;
    Texts lines;  // behind the opening line
    std::string state;
    std::set<std::string> files;
  } cases[] = {
      {"exported",
       {{"D1", {"P"}}},
       true,
       "",
       exported,
       "完成成果输出|",
       {"B1/D1-001.tif", "B1/old"}},
      {"both folder options off",
       {{"D1", {"P"}}},
       false,
       "",
       exported,
       "完成成果输出|",
       {"B1/old", "D1-001.tif"}},
      {"no page", {{"D1", {" ", ""}}}, true, "", exported, "完成成果输出|", {"B1/old"}},
      {"a document fails",
       {{"D1", {"P"}}, {"D2", {"missing"}}, {"D3", {"P"}}},
       true,
       "",
       failed,
       "完成扫描|成果输出失败！",
       {}},
      {"a document fails, no folder of its own",
       {{"D1", {"P"}}, {"D2", {"missing"}}},
       false,
       "",
       failed,
       "完成扫描|成果输出失败！",
       {"B1/old", "D1-001.tif"}},
      {"an empty Doc.dat",
       {{"D1", {"P"}}, {"D2", {}}},
       true,
       "",
       failed,
       "完成扫描|成果输出失败！",
       {}},
      {"the update fails",
       {{"D1", {"P"}}},
       true,
       "create trigger t before update of BatchState on T_BatchInfo "
       "begin select raise(fail, 'refused'); end",
       notUpdated,
       "完成扫描|成果输出失败！",
       {"B1/D1-001.tif", "B1/old"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    for (const char* name : {"Batchs", "Log"}) fs::remove_all(station.native(name));
    for (const auto& entry : fs::directory_iterator(station.output())) fs::remove_all(entry);
    test::writeBytes(station.output("B1/old"), "of an earlier export");
    station.createTable({"B1"});
    station.query(c.sql);
    for (const auto& [name, pages] : c.documents) station.addDocument("B1/" + name, pages);
    const auto scans = station.scanTree();
    frmMain.options.IsCreateBatchFolder = c.batchFolder;
    frmMain.stopAfterBatch = true;
    run();
    Texts lines{"档案：B1开始导出..."};
    lines.insert(lines.end(), c.lines.begin(), c.lines.end());
    EXPECT_EQ(frmMain.lines, lines);
    EXPECT_EQ(frmMain.journal.back(), "buttons");
    EXPECT_EQ(station.stateOf("B1"), c.state);
    EXPECT_EQ(station.outputFiles(), c.files);
    EXPECT_EQ(station.scanTree(), scans);
  }
}

TEST_F(RunOutPutBatch, ABatchWithoutDocumentsIsExported) {
  station.createTable({"B1"});
  fs::create_directories(station.scan("B1/empty"));
  frmMain.options.IsCreateBatchFolder = true;
  run();
  EXPECT_EQ(frmMain.lines,
            (Texts{"档案：B1开始导出...", "档案导出成果成功！", " ", " 没有扫描完成的档案！"}));
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|");
  EXPECT_TRUE(fs::is_empty(station.output()));
}

TEST_F(RunOutPutBatch, ABatchWhoseNameIsNoFolderNameCountsAsMissing) {
  fs::create_directories(station.scan("B1"));
  test::writeBytes(station.output("keep"), "kept");
  frmMain.options.IsCreateBatchFolder = true;
  frmMain.stopAfterBatch = true;
  for (const std::string name : {"gone", "", ".", "..", "B1/", "../Batchs/B1", "B1\\", "..\\Log"}) {
    station.createTable({name});
    run();
    const std::string title = "档案：" + name;
    EXPECT_EQ(frmMain.lines,
              (Texts{title + "开始导出...", title + "处理失败【档案找不到！】...", " "}));
    EXPECT_EQ(station.stateOf(name), "完成扫描|档案扫描件找不到！");
    EXPECT_EQ(station.outputFiles(), std::set<std::string>{"keep"});
    EXPECT_TRUE(fs::exists(station.scan("B1")));
  }
}

TEST_F(RunOutPutBatch, NeverDeletesTheProgramOrTheScans) {
  const std::string self = station.native().filename().string();
  const std::wstring parent = pathText(station.native().parent_path());
  fs::create_directory_symlink(station.native("Batchs"), station.output("link"));
  const struct {
    std::wstring savePath;
    std::string batch;
  } cases[] = {
      {parent, self},                      // the program's folder
      {station.path(), "Batchs"},          // the scan tree
      {station.path() + L"\\", "Batchs"},  //
      {station.path(L"Batchs"), "B1"},     // the batch's own scans
      {station.outputText() + L"\\link", "B1"},
      {station.outputText(), "link"},
  };
  frmMain.options.IsCreateBatchFolder = true;
  frmMain.stopAfterBatch = true;
  for (const auto& c : cases) {
    SCOPED_TRACE(toUtf8(c.savePath) + " + " + c.batch);
    fs::remove_all(station.native("Log"));
    station.createTable({c.batch});
    station.addDocument(c.batch + "/D1", {"P", "missing"});
    const auto scans = station.scanTree();
    frmMain.options.SavePath = c.savePath;
    run();
    EXPECT_EQ(frmMain.lines, (Texts{"档案：" + c.batch + "开始导出...", "D1 导出失败！", " "}));
    EXPECT_EQ(station.scanTree(), scans);
    EXPECT_EQ(station.stateOf(c.batch), "完成扫描|成果输出失败！");
    ASSERT_FALSE(station.logEntries().empty());
    EXPECT_NE(station.logEntries().back().find(L"不删除："), std::wstring::npos);
    fs::remove_all(station.scan(c.batch));
  }
}

TEST_F(RunOutPutBatch, DeletesALinkButNotWhatLiesBehindIt) {
  station.createTable({"B1"});
  station.addDocument("B1/D1", {"missing"});
  test::writeBytes(station.output("elsewhere/keep"), "kept");
  fs::create_directory_symlink(station.output("elsewhere"), station.output("B1"));
  frmMain.options.IsCreateBatchFolder = true;
  frmMain.stopAfterBatch = true;
  run();
  EXPECT_EQ(station.outputFiles(), std::set<std::string>{"elsewhere/keep"});
}

TEST_F(RunOutPutBatch, AnUnreadableFieldEndsTheRunAndTheButtonsComeBack) {
  const Texts opened{"档案：B1开始导出..."};
  const struct {
    const char* change;
    Texts lines;
  } cases[] = {{"PaperNum=null", opened},
               {"PaperNum='many'", opened},
               {"PaperNum=40000", opened},
               {"BatchID=null", {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.change);
    station.createTable({"B1"});
    station.query(std::string("update T_BatchInfo set ") + c.change);
    frmMain.window.boxes.clear();
    run();
    EXPECT_EQ(frmMain.lines, c.lines);
    EXPECT_EQ(station.query("select BatchState, Remark is null from T_BatchInfo"), "完成扫描|1\n");
    ASSERT_EQ(frmMain.window.boxes.size(), 1u);
    const test::Box& box = frmMain.window.boxes[0];
    EXPECT_EQ(box.text.rfind(L"RunOutPutBatch Err:", 0), 0u);
    EXPECT_GT(box.text.size(), std::wstring(L"RunOutPutBatch Err:").size());
    EXPECT_EQ(box.title, L"Orvane成果导出[mdlDataBase]");
    EXPECT_EQ(box.icon, BoxIcon::Critical);
    EXPECT_EQ(station.logEntries().back(),
              L"Orvane成果导出 - Orvane成果导出[mdlDataBase]:" + box.text);
    EXPECT_EQ(Texts(frmMain.journal.end() - 2, frmMain.journal.end()),
              (Texts{"btnRun on", "buttons"}));
  }
}

TEST_F(RunOutPutBatch, WhatStopsARunBeforeItBegins) {
  const struct {
    std::wstring savePath, width, text, title;
  } cases[] = {
      {L"", L"3", L"成果输出文件夹不能为空！", L"提醒"},
      {station.outputText() + L"\\none", L"3", L"成果输出文件夹不存在！", L"提醒"},
      {station.outputText(), L"32768", L"RunOutPutBatch Err:", L"Orvane成果导出[mdlDataBase]"},
  };
  for (const auto& c : cases) {
    frmMain.options.SavePath = c.savePath;
    frmMain.pageNumberWidth = c.width;
    frmMain.window.boxes.clear();
    run();
    EXPECT_TRUE(frmMain.journal.empty()) << "no button moves, no line";
    ASSERT_EQ(frmMain.window.boxes.size(), 1u);
    EXPECT_EQ(frmMain.window.boxes[0].text.rfind(c.text, 0), 0u);
    EXPECT_EQ(frmMain.window.boxes[0].title, c.title);
    EXPECT_EQ(frmMain.window.boxes[0].icon, BoxIcon::Critical);
  }
}

TEST_F(RunOutPutBatch, ADatabaseThatCannotBeOpenedEndsTheRunAfterThreePasses) {
  run();
  Texts expected{"btnRun off", "buttons"};
  expected.insert(expected.end(), 3 * 4, "yield");
  expected.insert(expected.end(), {"btnRun on", "buttons"});
  EXPECT_EQ(frmMain.journal, expected);
  EXPECT_EQ(frmMain.window.boxes.size(), 3u * 2);
}

TEST_F(RunOutPutBatch, AStopFinishesTheBatchAndTheNextRunWorksOn) {
  station.createTable({"B1", "B2"});
  for (const char* name : {"B1/D1", "B1/D2", "B2/D1"}) station.addDocument(name, {"P"});
  frmMain.whenYielding = [&] { frmMain.setIsStopRequested(true); };
  run();
  EXPECT_EQ(frmMain.lines, (Texts{"档案：B1开始导出...", "D1 导出成功！", "D2 导出成功！",
                                  "档案导出成果成功！", " "}));
  EXPECT_EQ(station.stateOf("B2"), "完成扫描|");
  frmMain.whenYielding = nullptr;
  run();
  EXPECT_EQ(frmMain.lines, (Texts{"档案：B2开始导出...", "D1 导出成功！", "档案导出成果成功！", " ",
                                  " 没有扫描完成的档案！"}));
  EXPECT_EQ(station.stateOf("B2"), "完成成果输出|");
}

TEST_F(RunOutPutBatch, AFailedBatchIsTheOldestOneAgain) {
  station.createTable({"B1", "B2"});
  station.addDocument("B2/D1", {"P"});
  int passes = 0;
  frmMain.whenYielding = [&] {
    passes += frmMain.journal[frmMain.journal.size() - 2] == "line  ";
    if (passes == 2) station.addDocument("B1/D1", {"P"});
  };
  run();
  Texts expected;
  for (int i = 0; i < 2; ++i) {
    expected.insert(expected.end(),
                    {"档案：B1开始导出...", "档案：B1处理失败【档案找不到！】...", " "});
  }
  for (const char* batch : {"B1", "B2"}) {
    expected.insert(expected.end(), {std::string("档案：") + batch + "开始导出...", "D1 导出成功！",
                                     "档案导出成果成功！", " "});
  }
  expected.push_back(" 没有扫描完成的档案！");
  EXPECT_EQ(frmMain.lines, expected);
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|档案扫描件找不到！") << "an old remark stays";
}

}  // namespace
}  // namespace orvane
