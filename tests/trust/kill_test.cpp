// The real program, killed before system calls throughout a run.
#include <csignal>
#include <gtest/gtest.h>

#include "end_to_end/Operator.h"
#include "end_to_end/Screen.h"
#include "foundation/text_encoding.h"
#include "settings/ExportSettings.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class Kill : public testing::Test {
 protected:
  Kill() {
    Screen::forAllTests();
    ExportSettings options;
    options.SavePath = station.outputText();
    options.ReNameFormat = kNameOfDocument;
    options.SaveFileType = 2;
    options.IsMutiPage = true;
    options.IsCreateBatchFolder = true;
    layOut(station, options);
    for (const char* name : {"B1/D1", "B1/D2", "B2/D1", "B3/D1"}) {
      station.addDocument(name, {"P1", "P2", "P3", "P4"});
    }
    // The settings as the program writes them, without one key, which each run adds.
    Operator(station).leave();
    settings = readBytes(station.native("data.ini"));
    settings.erase(settings.find("ReNameSp2"), std::string("ReNameSp2=_\r\n").size());
  }

  void reset() {
    for (const char* name : {"output", "Log", "calls"}) fs::remove_all(station.native(name));
    fs::create_directory(station.output());
    station.createTable({"B1", "B2", "B3"});
    station.write("data.ini", settings);
  }

  // Runs the program and kills it before call number `at`; 0 only counts the calls. Returns the
  // exit code.
  int runAndKill(long at) const {
    try {
      // By its name only, because the loader splits LD_PRELOAD at blanks.
      Operator person(
          station, "LD_PRELOAD=" FAULTS " LD_LIBRARY_PATH=" + quoted(std::string(FAULTS_FOLDER)) +
                       " KILL_AT_CALL=" + std::to_string(at) + " KILL_FOLDER=" +
                       quoted(station.native()) + " CALLS_FILE=" + quoted(station.native("calls")));
      person.pressRun();
      return person.leave();
    } catch (const NoWindow& end) {
      return end.exitCode;
    }
  }

  long callsMade() const { return static_cast<long>(fs::file_size(station.native("calls"))); }

  // The state of the database and of the settings.
  std::string result() const {
    return station.query("pragma integrity_check; select BatchState from T_BatchInfo") +
           readBytes(station.native("data.ini"));
  }

  ExportStation station;
  std::string settings;
};

// ORVANE_KILLS sets the number of kills; 100 take some minutes.
TEST_F(Kill, ANewStartFinishesTheTableAfterAKillAtAnyMoment) {
  const char* const wanted = std::getenv("ORVANE_KILLS");
  const long kills = wanted != nullptr ? std::stol(wanted) : 10;
  const auto scans = station.scanTree();
  reset();
  ASSERT_EQ(runAndKill(0), 0);
  const auto outputs = station.outputTree();
  const std::string undisturbed = result(), finished = readBytes(station.native("data.ini"));
  EXPECT_EQ(outputs.size(), 7u);
  EXPECT_TRUE(undisturbed.starts_with("ok\n完成成果输出\n完成成果输出\n完成成果输出\n"));
  const long calls = callsMade();
  ASSERT_GE(calls, 100);
  for (long i = 0; i < kills; ++i) {
    const long at = 1 + i * (calls - 1) / std::max(1L, kills - 1);
    SCOPED_TRACE("call " + std::to_string(at) + " of " + std::to_string(calls));
    reset();
    // The threads that prepare pages make a different number of calls each time.
    const int exitCode = runAndKill(at);
    EXPECT_TRUE(exitCode == 128 + SIGKILL || (exitCode == 0 && callsMade() < at)) << exitCode;
    const std::string left = readBytes(station.native("data.ini"));
    EXPECT_TRUE(left == settings || left == finished) << left << settings << finished;
    Operator person(station);
    person.pressRun();
    EXPECT_EQ(person.leave(), 0);
    EXPECT_EQ(result(), undisturbed);
    EXPECT_EQ(station.outputTree(), outputs);
    EXPECT_EQ(station.scanTree(), scans);
  }
}

}  // namespace
}  // namespace orvane::test
