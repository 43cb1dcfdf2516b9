// Runs that do not go through undisturbed, with the real program.
#include <csignal>
#include <gtest/gtest.h>

#include "end_to_end/Operator.h"
#include "end_to_end/Screen.h"
#include "foundation/utf8_text.h"
#include "settings/NamingPattern.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class Disturbances : public testing::Test {
 protected:
  static void SetUpTestSuite() { Screen::forAllTests(); }

  Disturbances() {
    ExportSettings options;
    options.SavePath = station.outputText();
    options.ReNameFormat = kNameOfDocumentAndPage;
    options.IsCreateBatchFolder = true;
    layOut(station, options);
  }

  // Enough work that the batch is far from its end when its first file is there.
  void addLongBatch(const std::string& batch) {
    for (int i = 0; i < kDocuments; ++i) {
      station.addDocument(batch + "/" + std::to_string(1000 + i), {"P1", "P2"});
    }
  }

  // Halts the program in the middle of the first batch, so that what the operator does next
  // arrives there.
  void haltInMidBatch(Operator& person) {
    waitFor("the first file", [&] { return fs::exists(station.output("B1/1000_001.tif")); });
    person.program().send(SIGSTOP);
    ASSERT_LT(station.outputFiles().size(), kDocuments * 2u);
    ASSERT_EQ(station.stateOf("B1"), "完成扫描|");
  }

  static constexpr int kDocuments = 150;
  ExportStation station;
};

TEST_F(Disturbances, AFailedBatchIsTriedAgainUntilStop) {
  const struct {
    const char* what;
    bool hasScans;
    Lines pass;
    std::string remark, logged;
  } cases[] = {
      {"a page is missing",
       true,
       {"档案：B1开始导出...", "D1 导出成功！", "D2 导出失败！", " "},
       "成果输出失败！",
       "Orvane成果导出 - Orvane成果导出:DocumentHelper-SaveAsDocument-按页保存时出错。页码：2"},
      {"the scan folder is missing",
       false,
       {"档案：B1开始导出...", "档案：B1处理失败【档案找不到！】...", " "},
       "档案扫描件找不到！",
       ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    fs::remove_all(station.native("Batchs"));
    fs::remove_all(station.native("Log"));
    station.createTable({"B1", "B2"});
    station.addDocument("B2/D1", {"P1"});
    if (c.hasScans) {
      station.addDocument("B1/D1", {"P1"});
      station.addDocument("B1/D2", {"P1", "missing"});
    }
    const auto scans = station.scanTree();
    Operator person(station);
    person.pressRun();
    waitFor("the remark", [&] { return station.stateOf("B1") == "完成扫描|" + c.remark; });
    person.pressStop();
    EXPECT_EQ(person.leave(), 0) << "after the stop the program can be left";
    EXPECT_EQ(station.stateOf("B1"), "完成扫描|" + c.remark);
    EXPECT_EQ(station.stateOf("B2"), "完成扫描|") << "younger batches wait";
    EXPECT_TRUE(station.outputFiles().empty());
    EXPECT_EQ(station.scanTree(), scans);
    const auto log = station.logEntries();
    EXPECT_EQ(log.empty() ? "" : toUtf8(log.at(1)), c.logged);
  }
}

TEST_F(Disturbances, TheListShowsEachPassOfAFailingBatch) {
  station.createTable({"B1"});
  Operator person(station);
  person.pressRun();
  waitFor("the remark", [&] { return station.stateOf("B1") == "完成扫描|档案扫描件找不到！"; });
  person.pressStop();
  const Lines lines = person.listEndingWith(" ");
  const Lines pass{"档案：B1开始导出...", "档案：B1处理失败【档案找不到！】...", " "};
  ASSERT_EQ(lines.size() % pass.size(), 0u);
  for (std::size_t i = 0; i < lines.size(); ++i) ASSERT_EQ(lines[i], pass[i % pass.size()]);
}

TEST_F(Disturbances, ALockedDatabaseIsToldAndTheRunGoesOnWithoutTheLock) {
  station.createTable({"B1"});
  station.addDocument("B1/D1", {"P1"});
  const fs::path ready = station.native("ready"), release = station.native("release");
  Process scanning({"sh", "-c",
                    "(echo 'begin exclusive;'; echo '.shell touch " + ready.string() +
                        "'; while [ ! -e " + release.string() +
                        " ]; do sleep 0.01; done; echo 'rollback;') | sqlite3 " +
                        station.native("Orvane.dll").string()});
  waitFor("the lock", [&] { return fs::exists(ready); });
  Operator person(station);
  person.pressRun();
  person.closeBox("Orvane成果导出[mdlDataBase]");  // the connection
  writeBytes(release, "");
  person.closeBox("Orvane成果导出[mdlDataBase]");  // the query
  waitFor("the end of the lock", [&] { return scanning.exitCode().has_value(); });
  const Lines lines = person.listEndingWith(" 没有扫描完成的档案！");
  EXPECT_EQ(lines, (Lines{"档案：B1开始导出...", "D1 导出成功！", "档案导出成果成功！", " ",
                          " 没有扫描完成的档案！"}));
  EXPECT_EQ(person.leave(), 0);
  EXPECT_EQ(toUtf8(station.logEntries().at(0)),
            "Orvane成果导出 - Orvane成果导出[mdlDataBase]:OpenConnection Err:database is locked");
}

TEST_F(Disturbances, AStopFinishesTheBatchAndBeginsNoOther) {
  station.createTable({"B1", "B2"});
  addLongBatch("B1");
  station.addDocument("B2/D1", {"P1"});
  Operator person(station);
  person.pressRun();
  haltInMidBatch(person);
  person.pressStop();
  person.program().send(SIGCONT);
  const Lines lines = person.listEndingWith(" ");
  ASSERT_EQ(lines.size(), kDocuments + 3u);
  EXPECT_EQ(lines[kDocuments], "1149 导出成功！");
  EXPECT_EQ(lines[kDocuments + 1], "档案导出成果成功！");
  EXPECT_EQ(person.leave(), 0);
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|");
  EXPECT_EQ(station.stateOf("B2"), "完成扫描|");
  EXPECT_EQ(station.outputFiles().size(), kDocuments * 2u);
}

TEST_F(Disturbances, TheCloseBoxEndsTheProgramInMidBatch) {
  station.createTable({"B1"});
  addLongBatch("B1");
  Operator person(station);
  person.pressRun();
  haltInMidBatch(person);
  person.closeWindow();
  person.program().send(SIGCONT);
  waitFor("the end", [&] { return person.program().exitCode().has_value(); });
  EXPECT_EQ(person.program().exitCode(), 0);
  EXPECT_LT(station.outputFiles().size(), kDocuments * 2u) << "at once, not at the batch's end";
  EXPECT_EQ(station.stateOf("B1"), "完成扫描|");
  EXPECT_NE(readBytes(station.native("data.ini")).find("IsMutiPage=False\r\n"), std::string::npos)
      << "the settings are saved";
  EXPECT_TRUE(station.logEntries().empty());

  Operator later(station);
  later.pressRun();
  later.listEndingWith(" 没有扫描完成的档案！");
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|");
  EXPECT_EQ(station.outputFiles().size(), kDocuments * 2u);
}

TEST_F(Disturbances, ASecondInstanceEndsAtOnceAndDisturbsNothing) {
  station.createTable({"B1"});
  station.addDocument("B1/D1", {"P1"});
  auto first = std::make_unique<Operator>(station);
  Process second({station.native("orvane-export").string()});
  waitFor("the second to end", [&] { return second.exitCode().has_value(); });
  EXPECT_EQ(second.exitCode(), 0);
  first->pressRun();
  first->listEndingWith(" 没有扫描完成的档案！");
  EXPECT_EQ(station.stateOf("B1"), "完成成果输出|");

  first->program().send(SIGKILL);
  waitFor("the kill", [&] { return first->program().exitCode().has_value(); });
  Operator third(station);
  EXPECT_EQ(third.leave(), 0) << "a killed instance stands in nobody's way";
}

}  // namespace
}  // namespace orvane::test
