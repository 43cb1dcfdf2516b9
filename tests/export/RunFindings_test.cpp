// What a run finds in the output folder beside its own files.

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

#include "export/WholeRun.h"

namespace orvane {
namespace {

class FindingsOfRun : public test::WholeRun {};

TEST_F(FindingsOfRun, FilesReplacedInTheSameRunOrLeftFromAnEarlierExportAreLogged) {
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

TEST_F(FindingsOfRun, EachOfTwoFindingsThatRepeatIsLoggedOnce) {
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

}  // namespace
}  // namespace orvane
