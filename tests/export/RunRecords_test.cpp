// The report of a run and its list of checksums.

#include <gtest/gtest.h>
#include <regex>
#include <set>

#include "export/ExportStation.h"
#include "export/FileDigests.h"
#include "export/JournalHost.h"
#include "export/RunOutPutBatch.h"
#include "export/WholeRun.h"
#include "foundation/Failure.h"
#include "foundation/FileSystemObject.h"
#include "foundation/mdlFolderAndFile.h"
#include "settings/ExportSettings.h"
#include "support/open_files.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

class RecordsOfRun : public test::WholeRun {
 protected:
  RecordsOfRun() { host.options.ReNameFormat = kNameOfDocument; }
};

class ReportOfRun : public test::WholeRun {};

TEST_F(ReportOfRun, AReportHasARowForEachDocumentAndASumForEachBatch) {
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

TEST_F(ReportOfRun, AReportThatCannotBeWrittenIsLoggedOnceAndFailsNothing) {
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

TEST_F(RecordsOfRun, TheReportEndsWithWhatIsLeft) {
  const struct {
    const wchar_t* pattern;
    bool batchFolder, isMutiPage;
    std::vector<std::pair<std::string, std::string>> documents;  // and their pages; "-": missing
    std::string sums;                                            // batch, pages, files, result
    std::string listed;                                          // in the list of checksums
  } cases[] = {{kNameOfPage,
                true,
                false,
                {{"B1/D1", "PP"}, {"B2/D1", "P"}},
                "B1 2 2 成功|B2 1 1 成功|",
                "B1/001.tif B1/002.tif B2/001.tif"},
               {kNameOfPage,
                false,
                false,
                {{"B1/D1", "PP"}, {"B1/D2", "PPP"}, {"B2/D1", "P"}, {"B3/D1", "P"}},
                "B1 3 3 成功|B2 1 1 成功|B3 1 1 成功|……|"
                "B1 2 2 不全 合计的 3 个文件只剩 2 个，最早替换它们的是档案【B2】|"
                "B2 0 0 不全 合计的 1 个文件只剩 0 个，最早替换它们的是档案【B3】|",
                "002.tif 003.tif 001.tif"},
               {kNameOfDocument,
                false,
                true,
                {{"B1/D1", "PP"}, {"B1/D2", "P"}, {"B2/D1", "PPP"}},
                "B1 3 2 成功|B2 3 1 成功|……|"
                "B1 1 1 不全 合计的 2 个文件只剩 1 个，最早替换它们的是档案【B2】|",
                "D2.tif D1.tif"},
               // A batch that fails for ever, and one that fails three times.
               {kNameOfDocument,
                false,
                false,
                {{"B1/D1", "PP"}, {"B2/D1", "P"}, {"B2/D2", "-"}},
                "B1 2 2 成功|B2 1 1 失败|B2 1 1 失败|……|"
                "B1 1 1 不全 合计的 2 个文件只剩 1 个，最早替换它们的是档案【B2】|"
                "B2 1 1 失败 只有最后一次的合计算数|",
                "D1002.tif"},
               {kNameOfDocument,
                false,
                false,
                {{"B1/D1", "P"}, {"B1/D2", "P-"}, {"B2/D", "P"}},
                "B1 2 2 失败|B1 3 3 成功|B2 1 1 成功|……|B1 3 3 成功 只有最后一次的合计算数|",
                "D1001.tif D2001.tif D2002.tif D001.tif"},
               // A batch that is exported, fails when it is exported again, and is deleted.
               {kNameOfDocument,
                true,
                false,
                {{"B1/D1", "PP"}},
                "B1 2 2 成功|B1 0 0 失败|……|B1 0 0 失败 只有最后一次的合计算数|",
                ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    station.shell("rm -rf Batchs Log output/*");
    std::set<std::string> batches;
    for (const auto& [name, pages] : c.documents) {
      std::vector<std::string> names;
      for (const char page : pages) names.push_back(page == '-' ? "missing" : "P");
      station.addDocument(name, names);
      batches.insert(name.substr(0, 2));
    }
    station.createTable({batches.begin(), batches.end()});
    host.options.ReNameFormat = c.pattern;
    host.options.IsCreateBatchFolder = c.batchFolder;
    host.options.IsMutiPage = c.isMutiPage;
    int failures = 0;
    host.whenLineAdded = [&](const std::string& line) {
      if (line == "档案导出成果成功！" && c.documents.size() == 1) {  // to be exported again
        station.addDocument("B1/D2", {"missing"});
        station.query("update T_BatchInfo set BatchState = '完成扫描'");
      }
      if (line != "D2 导出失败！" || (++failures < 3 && c.documents.size() > 1)) return;
      if (c.documents.back().second == "-" || c.documents.size() == 1) {
        host.setIsStopRequested(true);
      } else {
        station.addDocument("B1/D2", {"P", "P2"});
      }
    };
    RunOutPutBatch(host);
    // The last row of each batch is what is in the output folder.
    const std::string sums = station.shell(R"(cat Log/*-*.txt | tr -d '\r' | awk -F '\t' '
        /^以下/ { print "……" }
        $3 != "" && /合计|现存/ { files[$1] = $4; bytes[$1] = $5
          print $1, $3, $4, $7 ($2 == "现存" ? " " $8 : "") }
        END { for (b in files) { n += files[b]; sum += bytes[b] }; print n + 0, sum + 0 }' |
        tr '\n' '|')");
    const std::string found = station.shell(
        "find output -type f -printf '%s\\n' | awk '{ bytes += $1 } END { print NR, bytes + 0 }'");
    EXPECT_EQ(sums, c.sums + found.substr(0, found.size() - 1) + "|");
    EXPECT_EQ(station.shell("find Log -name '*.sha256' -exec cat {} +"),
              c.listed.empty() ? "" : station.shell("cd output && sha256sum " + c.listed));
  }
}

TEST_F(RecordsOfRun, ADeliveryIsCheckedWithSha256sum) {
  struct NoChecksumsOfB1 : FileSystemObject {
    void AppendFile(const std::wstring& path, std::string_view bytes) override {
      if (bytes.find("  B1/") == bytes.npos) return FileSystemObject::AppendFile(path, bytes);
      FileSystemObject::AppendFile(path, bytes.substr(0, 70));
      throw Failure("no space");
    }
  };
  station.createTable({"B1", "B2", "B3", "B4"});
  station.addDocument("B1/D1", {"P"});
  for (const char* name : {"B2/D\\1", "B2/D\n2", "B2/ #中 ", "B3/D1", "B4/gone", "B4/kept"}) {
    station.addDocument(name, {"P1", "P2"});
  }
  host.options.SavePath += L"\\";
  host.options.IsCreateDocFolder = true;
  int batch = 0;
  host.whenLineAdded = [&](const std::string& line) {
    if (line == " ") host.options.SavePath = station.path(++batch == 2 ? L"second" : L"output\\");
    if (line == "gone 导出成功！") station.shell("rm -f output/B4/gone/*1.tif");
  };
  for (const bool isMutiPage : {false, true}) {
    SCOPED_TRACE(isMutiPage);
    station.shell("rm -rf Log output/* second; mkdir second");
    batch = 0;
    station.query("update T_BatchInfo set BatchState = '完成扫描'");
    host.options.IsMutiPage = isMutiPage;
    gFileSystem = std::make_unique<NoChecksumsOfB1>();
    RunOutPutBatch(host);
    gFileSystem.reset();
    for (const auto& [folder, list] :
         {std::pair("output", "*-??????.sha256"), std::pair("second", "*.2.sha256")}) {
      const std::string in = std::string("cd ") + folder + " && ",
                        of = std::string("../Log/") + list;
      EXPECT_EQ(station.shell(in + "sha256sum -c --strict --quiet " + of), "");
      EXPECT_EQ(station.shell(in + "sort " + of),
                station.shell(in + "find B[234] -type f -exec sha256sum {} + | sort"));
    }
    const std::string log = station.takeLog(), of = "Orvane成果导出:RunOutPutBatch-档案【";
    EXPECT_EQ(log.substr(0, log.find('\n')), of + "B1】的校验清单缺少文件：no space");
    EXPECT_EQ(log.find(of + "B4】的校验清单缺少文件：") != log.npos, !isMutiPage) << log;
  }
}

TEST_F(RecordsOfRun, DigestsAreMadeBeforeTheEndOfALargeBatch) {
  station.shell("truncate -s 8G output/large; for i in 1 2 3 4; do seq $i 9999 >output/$i; done");
  FileDigests digests(1);
  digests.beginBatch(station.native("output"));
  const auto add = [&](const std::string& name) {
    digests.add(name, fs::file_size(station.output(name)));
  };
  const auto expect = [&](std::vector<std::string> names) {
    digests.complete();
    std::string lines, expected;
    for (const FileDigests::File& file : digests.files()) {
      if (!file.isDropped) lines += file.digest + "  " + file.path + "\n";
    }
    for (const std::string& name : names) {
      expected += station.shell("cd output; sha256sum " + name);
    }
    EXPECT_EQ(lines, expected);
  };
  add("1");
  add("large");
  add("2");
  test::waitUntilOpen("output/large");
  digests.drop(1);
  EXPECT_FALSE(test::isOpen("output/large"));
  add("3");
  digests.drop(2);
  expect({"1", "3"});

  add("large");
  test::waitUntilOpen("output/large");
  digests.clear();
  EXPECT_FALSE(test::isOpen("output/large"));
  add("4");
  expect({"4"});
}

}  // namespace
}  // namespace orvane
