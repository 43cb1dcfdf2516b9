// The real program, killed in front of system calls all over a run.
#include <csignal>
#include <gtest/gtest.h>

#include "end_to_end/Operator.h"
#include "end_to_end/Screen.h"
#include "foundation/utf8_text.h"
#include "settings/NamingPattern.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

// Starts the program with the faults in front of it.
std::unique_ptr<Operator> startToBeKilled(const ExportStation& station, int atCall) {
  setenv("KILL_AT_CALL", std::to_string(atCall).c_str(), 1);
  setenv("KILL_FOLDER", station.native().c_str(), 1);
  setenv("LD_PRELOAD", FAULTS, 1);
  auto person = std::make_unique<Operator>(station);
  for (const char* name : {"LD_PRELOAD", "KILL_FOLDER", "KILL_AT_CALL"}) unsetenv(name);
  return person;
}

TEST(Kill, ANewStartFinishesTheTableOfAKilledProgram) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "nothing can be loaded in front of the sanitizer";
#endif
  Screen::forAllTests();
  ExportStation station;
  ExportSettings options;
  options.SavePath = station.outputText();
  options.ReNameFormat = kNameOfDocument;
  options.SaveFileType = 2;
  options.IsMutiPage = true;
  options.IsCreateBatchFolder = true;
  layOut(station, options);
  const std::string settings = readBytes(station.native("data.ini"));
  for (const char* name : {"B1/D1", "B1/D2", "B2/D1"}) {
    station.addDocument(name, {"P1", "P2", "P3"});
  }
  const auto scans = station.scanTree();
  std::map<std::string, std::string> undisturbed;
  for (const int atCall : {1'000'000, 1, 9, 17, 26, 35, 44}) {
    SCOPED_TRACE(atCall);
    fs::remove_all(station.output());
    fs::create_directory(station.output());
    station.createTable({"B1", "B2"});
    if (atCall < 1'000'000) {
      const auto person = startToBeKilled(station, atCall);
      person->pressRun();
      waitFor("the kill", [&] { return person->program().exitCode().has_value(); });
      EXPECT_EQ(person->program().exitCode(), 128 + SIGKILL);
      EXPECT_NE(station.query("select * from T_BatchInfo where BatchState='完成扫描'"), "");
      EXPECT_EQ(readBytes(station.native("data.ini")), settings);
    }
    Operator person(station);
    person.pressRun();
    person.listEndingWith(" 没有扫描完成的档案！");
    if (undisturbed.empty()) undisturbed = station.outputTree();
    EXPECT_EQ(station.outputTree(), undisturbed);
    EXPECT_EQ(station.query("pragma integrity_check; select BatchState from T_BatchInfo"),
              "ok\n完成成果输出\n完成成果输出\n");
    EXPECT_EQ(station.scanTree(), scans);
  }
  EXPECT_EQ(undisturbed.size(), 5u);
}

}  // namespace
}  // namespace orvane::test
