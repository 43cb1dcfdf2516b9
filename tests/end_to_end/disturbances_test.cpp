// Disturbed runs of the real program.
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/Operator.h"
#include "end_to_end/Screen.h"
#include "settings/ExportSettings.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

const char* const kAllDone = " 没有扫描完成的档案！";
const char* const kWaiting = "完成扫描|\n完成扫描|\n";
const char* const kExported = "完成成果输出|\n完成成果输出|\n";

class Disturbances : public testing::Test {
 protected:
  static void SetUpTestSuite() { Screen::forAllTests(); }

  // Two batches are waiting, B1 and the younger B2.
  Disturbances() {
    ExportSettings options;
    options.SavePath = station.outputText();
    options.ReNameFormat = kNameOfDocumentAndPage;
    options.IsCreateBatchFolder = true;
    layOut(station, options);
    station.createTable({"B1", "B2"});
    addDocuments("B1", 2);
    addDocuments("B2", 1);
  }

  // Adds documents of two pages, named 1000, 1001 and so on.
  void addDocuments(const std::string& batch, int count) {
    for (int i = 0; i < count; ++i) {
      station.addDocument(batch + "/" + std::to_string(1000 + i), {"P1", "P2"});
    }
  }

  // Calls `act` in the middle of a batch: the program is stopped at its first file until `act`
  // returns.
  void duringBatch(Operator& person, const std::function<void()>& act) {
    addDocuments("B1", kMany);
    person.program().stopAt([&] { return fs::exists(station.output("B1/1000_001.tif")); },
                            [&] { person.pressRun(); });
    ASSERT_EQ(station.outputFiles().size(), 1u);
    ASSERT_EQ(states(), kWaiting);
    act();
    person.program().send(SIGCONT);
  }

  // State and remark of both batches.
  std::string states() const {
    return station.query("select BatchState, Remark from T_BatchInfo order by BatchID");
  }

  static constexpr std::size_t kMany = 150;
  ExportStation station;
};

TEST_F(Disturbances, AFailedBatchIsTriedAgainUntilStop) {
  const struct {
    const char* command;
    std::string pass, remark, log;
  } cases[] = {
      {"rm Batchs/B1/1001/P2.tif", "档案：B1开始导出...\n1000 导出成功！\n1001 导出失败！\n \n",
       "成果输出失败！", "(.*DocumentHelper-SaveAsDocument-按页保存时出错。页码：2\n)+"},
      {"rm -r Batchs/B1", "档案：B1开始导出...\n档案：B1处理失败【档案找不到！】...\n \n",
       "档案扫描件找不到！", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.command);
    station.shell(c.command);
    const auto scans = station.scanTree();
    const std::string failed = "完成扫描|" + c.remark + "\n完成扫描|\n";
    Operator person(station);
    person.pressRun();
    waitFor("the remark", [&] { return states() == failed; });
    person.pressStop();
    std::string list = person.listEndingWith(" ") + "\n";
    while (list.starts_with(c.pass)) list.erase(0, c.pass.size());
    EXPECT_EQ(list, "") << "every pass must add the same lines";
    EXPECT_EQ(person.leave(), 0) << "after a stop the program can be closed";
    EXPECT_EQ(states(), failed) << "the younger batch must wait";
    EXPECT_TRUE(station.outputFiles().empty());
    EXPECT_EQ(station.scanTree(), scans);
    EXPECT_THAT(station.takeLog(), testing::MatchesRegex(c.log));
  }
}

TEST_F(Disturbances, WaitsForALockedDatabaseUntilItIsFreeOrTheOperatorActs) {
  FILE* const scanning =
      popen(("cd " + quoted(station.native()) + " && sqlite3 Orvane.dll").c_str(), "we");
  std::fputs("begin exclusive;\n.shell touch locked\n", scanning);
  std::fflush(scanning);
  waitFor("the lock", [&] { return fs::exists(station.native("locked")); });
  Operator impatient(station);
  impatient.pressRun();
  impatient.closeWindow();
  EXPECT_EQ(impatient.program().exitCodeAtEnd(), 0);
  EXPECT_EQ(station.takeLog(), "");

  Operator person(station);
  person.pressRun();
  person.pressStop();
  person.closeBox("Orvane成果导出[mdlDataBase]");  // the connection
  person.closeBox("Orvane成果导出[mdlDataBase]");  // the query
  person.pressRun();
  pclose(scanning);
  EXPECT_EQ(person.listEndingWith(kAllDone),
            "档案：B1开始导出...\n1000 导出成功！\n1001 导出成功！\n档案导出成果成功！\n \n"
            "档案：B2开始导出...\n1000 导出成功！\n档案导出成果成功！\n \n"
            " 没有扫描完成的档案！");
  EXPECT_EQ(person.leave(), 0);
  EXPECT_EQ(states(), kExported);
  const std::string source = "Orvane成果导出[mdlDataBase]:";
  EXPECT_EQ(station.takeLog(),
            source +
                "OpenConnection Err:按了“停止”，不再等待数据库，没有出错（别的程序正占用着它："
                "database is locked）\n" +
                source + "Error on opening database:按了“停止”，不再等待数据库，没有出错\n");
}

TEST_F(Disturbances, AStopFinishesTheCurrentBatchAndStartsNoOther) {
  Operator person(station);
  duringBatch(person, [&] { person.pressStop(); });
  EXPECT_THAT(person.listEndingWith(" "),
              testing::EndsWith("\n1149 导出成功！\n档案导出成果成功！\n "));
  EXPECT_EQ(person.leave(), 0);
  EXPECT_EQ(states(), "完成成果输出|\n完成扫描|\n");
  EXPECT_EQ(station.outputFiles().size(), kMany * 2);
}

TEST_F(Disturbances, EveryWayOfEndingTheProgramDuringABatchSavesTheSettingsFirst) {
  const auto send = [](int signal) {
    return [signal](Operator& person) { person.program().send(signal); };
  };
  const std::pair<const char*, std::function<void(Operator&)>> ways[] = {
      {"close box", [](Operator& person) { person.closeWindow(); }},
      {"SIGTERM", send(SIGTERM)},
      {"SIGHUP", send(SIGHUP)},
      {"SIGINT", send(SIGINT)},
      {"no display", [](Operator& person) { person.endDisplay(); }}};
  for (const auto& [name, way] : ways) {
    const auto& end = way;
    SCOPED_TRACE(name);
    station.shell("sed -i s/IsMutiPage=False/IsMutiPage=false/ data.ini; rm -rf output/*");
    Operator person(station, "--default-signal");
    duringBatch(person, [&] { end(person); });
    EXPECT_EQ(person.program().exitCodeAtEnd(), 0);
    EXPECT_LT(station.outputFiles().size(), kMany * 2)
        << "the program must end at once, not at the end of the batch";
    EXPECT_EQ(states(), kWaiting);
    EXPECT_THAT(station.read("data.ini"), testing::HasSubstr("IsMutiPage=False\r\n"))
        << "the settings are saved";
    EXPECT_EQ(station.takeLog(), "");
  }

  Operator later(station);
  later.pressRun();
  later.listEndingWith(kAllDone);
  EXPECT_EQ(states(), kExported);
  EXPECT_EQ(station.outputFiles().size(), kMany * 2 + 2);
}

TEST_F(Disturbances, AMissingOutputFolderIsReportedAndAnotherCanBeChosen) {
  station.shell("mkdir home; mv output moved");
  Operator person(station,
                  "-u XDG_CONFIG_HOME --default-signal HOME=" + quoted(station.native("home")));
  person.pressRun();
  person.closeBox("提醒");
  person.chooseFolder(station.native("moved"));
  person.pressRun();
  person.listEndingWith(kAllDone);
  EXPECT_TRUE(fs::exists(station.native("moved/B2/1000_001.tif")));
  EXPECT_FALSE(fs::exists(station.native("home/.config"))) << "the chooser must not write settings";
  station.shell("rm -r moved");
  person.pressRun();
  person.waitForBox("提醒");
  person.program().send(SIGTERM);
  EXPECT_EQ(person.program().exitCodeAtEnd(), 0) << "while a box is open";
}

TEST_F(Disturbances, WithoutAUtf8LocaleNothingIsDifferent) {
  station.addDocument("B2/件", {"页", "P"});
  station.write("Batchs/B2/件/Doc.dat", toAnsi(L"页$P$"));
  const std::string display = std::string("-i DISPLAY=") + std::getenv("DISPLAY");
  for (const std::string& locale :
       {std::string("LC_ALL=C"), std::string("LC_ALL=zh_CN.GBK"), display}) {
    SCOPED_TRACE(locale);
    station.shell("rm -rf output/*");
    station.query("update T_BatchInfo set BatchState='完成扫描'");
    Operator person(station, locale);
    EXPECT_EQ(person.olderTitle(), "WM_NAME = \"Orvane成果导出\"\n");
    person.pressRun();
    EXPECT_THAT(person.listEndingWith(kAllDone), testing::HasSubstr("\n件 导出成功！\n"));
    EXPECT_EQ(person.leave(), 0);
    EXPECT_EQ(station.shell("ls output/B2"),
              "1000_001.tif\n1000_002.tif\n件_001.tif\n件_002.tif\n");
  }
}

TEST_F(Disturbances, ASecondInstanceEndsAtOnce) {
  Operator first(station);
  Process second(quoted(station.native("orvane-export")));
  EXPECT_EQ(second.exitCodeAtEnd(), 0);
  first.pressRun();
  first.listEndingWith(kAllDone);
  EXPECT_EQ(states(), kExported);

  first.program().send(SIGKILL);
  EXPECT_EQ(first.program().exitCodeAtEnd(), 128 + SIGKILL);
  EXPECT_EQ(Operator(station).leave(), 0) << "a killed instance must not block the next one";
}

}  // namespace
}  // namespace orvane::test
