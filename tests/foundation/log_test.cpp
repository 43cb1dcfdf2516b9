#include <filesystem>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/mdlFolderAndFile.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using mdlFolderAndFile::LogWrite;
using testing::ElementsAre;

TEST(Log, AnEntryIsTwoLinesInTheFileOfTheDay) {
  const TempStation station;
  RecordingWindow window;
  const std::string before = outputOf("date '+%Y%m%d%H%M%S'");
  LogWrite(L"UpdateBatchInfo :失败", L"Orvane成果导出[mdlDataBase]");
  LogWrite(L"second\nwith \U0001F600", L"Document");
  const std::string after = outputOf("date '+%Y%m%d%H%M%S'");

  ASSERT_EQ(station.logFiles().size(), 1U);
  const fs::path log = station.logFiles()[0];
  EXPECT_GE(log.filename().string(), before.substr(0, 8) + ".log");
  EXPECT_LE(log.filename().string(), after.substr(0, 8) + ".log");

  const std::string text = outputOf("iconv -f GBK -t UTF-8 " + quoted(log));
  EXPECT_THAT(text, testing::MatchesRegex(
                        "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} Orvane成果导出 - "
                        "Orvane成果导出\\[mdlDataBase\\]:UpdateBatchInfo :失败\r\n\r\n"
                        "[0-9: -]{19} Orvane成果导出 - Document:second with \\?\r\n\r\n"));
  std::string stamp = text.substr(0, 19);
  std::erase_if(stamp, [](char c) { return c < '0' || c > '9'; });
  EXPECT_GE(stamp + "\n", before);
  EXPECT_LE(stamp + "\n", after);
  EXPECT_TRUE(window.boxes.empty());
}

TEST(Log, ANamedFileIsAppendedToAndTheLogFolderMadeAllTheSame) {
  const TempStation station;
  writeBytes(station.native("own.txt"), "kept\r\n");
  LogWrite(L"m", L"s", false, station.path(L"own.txt"));
  LogWrite(L"m", L"s", false, station.path(L"no-folder\\own.txt"));
  EXPECT_TRUE(readBytes(station.native("own.txt")).starts_with("kept\r\n2"));
  EXPECT_FALSE(fs::exists(station.native("no-folder")));
  EXPECT_TRUE(fs::is_empty(station.native("Log")));
}

TEST(Log, TheBoxIsShownWhateverHappenedToTheFile) {
  const TempStation station;
  writeBytes(station.native("Log"), "a file where the folder should be");
  RecordingWindow window;
  LogWrite(L"message", L"source", true);
  EXPECT_THAT(window.boxes, ElementsAre(Box{L"message", L"source", BoxIcon::Critical}));
  EXPECT_EQ(readBytes(station.native("Log")), "a file where the folder should be");

  setProgramFolder(std::wstring(L"\0", 1));  // no path of any platform
  LogWrite(L"again", L"source", true);
  EXPECT_EQ(window.boxes.size(), 2U);
}

TEST(Log, EntriesOfTwoProgramsDoNotMix) {
  const TempStation station;
  fs::create_directory(station.native("Log"));
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
