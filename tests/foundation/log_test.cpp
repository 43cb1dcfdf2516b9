#include "foundation/log.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/log_files.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using mdlFolderAndFile::LogWrite;

TEST(Log, AnEntryIsTwoLinesInTheFileOfTheDay) {
  const TempStation station;
  RecordingWindow window;
  const std::string before = outputOf("date '+%Y-%m-%d %H:%M:%S'");
  LogWrite(L"UpdateBatchInfo :失败", L"Orvane成果导出[mdlDataBase]");
  LogWrite(L"second\nwith \U0001F600", L"Document");
  const std::string after = outputOf("date '+%Y-%m-%d %H:%M:%S'");

  const std::string text = station.shell("iconv -f GBK -t UTF-8 Log/*.log");
  EXPECT_THAT(text, testing::MatchesRegex(
                        "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} Orvane成果导出 - "
                        "Orvane成果导出\\[mdlDataBase\\]:UpdateBatchInfo :失败\r\n\r\n"
                        "[0-9: -]{19} Orvane成果导出 - Document:second with \\?\r\n\r\n"));
  const std::string stamp = text.substr(0, 19) + "\n";
  EXPECT_TRUE(before <= stamp && stamp <= after) << stamp;
  std::string day = text.substr(0, 10);
  std::erase(day, '-');
  EXPECT_EQ(station.shell("ls Log"), day + ".log\n");
  EXPECT_EQ(window.takeBoxes(), "");
}

TEST(Log, ANamedFileIsAppendedToAndABoxShownWhateverHappensToTheFile) {
  const TempStation station;
  RecordingWindow window;
  station.write("own.txt", "kept\r\n");
  LogWrite(L"m", L"s", false, station.path(L"own.txt"));
  LogWrite(L"m", L"s", true, station.path(L"no-folder\\own.txt"));
  EXPECT_TRUE(station.read("own.txt").starts_with("kept\r\n2"));
  EXPECT_EQ(station.shell("ls . Log"), ".:\nLog\nown.txt\n\nLog:\n");
  station.shell("rmdir Log; touch Log");
  LogWrite(L"message", L"source", true);
  setProgramFolder(std::wstring(L"\0", 1));  // no path of any platform
  LogWrite(L"again", L"source", true);
  EXPECT_EQ(window.takeBoxes(), "m | s | !\nmessage | source | !\nagain | source | !\n");
}

TEST(Log, TheEndOfTheDaysFileIsReadInWholeEntries) {
  const TempStation station;
  for (const wchar_t* message : {L"第一", L"第二", L"第三"}) LogWrite(message, L"s");
  const std::wstring file = logFileOfToday();
  const auto stamps = std::regex("[0-9-]{10} [0-9:]{8} Orvane成果导出 - ");
  for (const auto& [most, text] :
       {std::pair{4096, "s:第一\ns:第二\ns:第三\n"}, {90, "s:第三\n"}, {3, ""}, {0, ""}}) {
    EXPECT_EQ(std::regex_replace(toUtf8(readLogFile(file, most)), stamps, ""), text);
  }
  EXPECT_ANY_THROW(readLogFile(station.path(L"Log"), 9));
}

TEST(Log, LogsAndReportsAreListedNewestFirst) {
  const TempStation station;
  EXPECT_TRUE(dailyLogs().empty() && runReports().empty());
  station.shell(
      "mkdir Log && cd Log && touch 20240301.log 20231231.log 20240302.log 20240301.txt old.log "
      "20240301-220005.txt 20240301-220005-2.txt 20240301-090000.txt 20240301-090000.sha256");
  const auto names = [](const std::vector<std::wstring>& files) {
    std::string text;
    for (const std::wstring& file : files) text += toUtf8(file.substr(logFolder().size())) + " ";
    return text;
  };
  EXPECT_EQ(names(dailyLogs()), "\\20240302.log \\20240301.log \\20231231.log ");
  EXPECT_EQ(names(runReports()),
            "\\20240301-220005-2.txt \\20240301-220005.txt \\20240301-090000.txt ");
  station.write("Log/20240301-220005.txt", "档案\t结果\r\nB1\t成功\r\n");
  EXPECT_EQ(readLogFile(runReports()[1], 4096), L"档案\t结果\nB1\t成功\n");
  station.shell("rm -r Log; touch Log");
  EXPECT_ANY_THROW(dailyLogs());
}

TEST(Log, EntriesOfTwoProgramsDoNotMix) {
  const TempStation station;
  std::filesystem::create_directory(station.native("Log"));
  constexpr int kEntries = 300;
  const pid_t child = fork();
  for (int i = 0; i < kEntries; ++i) LogWrite(std::wstring(2000, child == 0 ? L'甲' : L'乙'), L"s");
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);

  const std::vector<std::wstring> entries = station.logEntries();
  EXPECT_EQ(entries.size(), 2U * kEntries);
  for (const std::wstring& entry : entries) EXPECT_EQ(entry.size(), entries[0].size());
}

}  // namespace
}  // namespace orvane::test
