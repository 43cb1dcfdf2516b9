// What can disturb a run. Each disturbance is reported, nothing outside the output folder changes,
// and the next run finishes after the cause was removed.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include "batchdb/mdlDataBase.h"
#include "export/ExportStation.h"
#include "export/JournalHost.h"
#include "export/RunOutPutBatch.h"
#include "settings/ExportSettings.h"
#include "settings/mdlINI.h"
#include "support/AsOrdinaryUser.h"
#include "trust/faults.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class DisturbedRun : public testing::Test {
 protected:
  DisturbedRun() {
    host.options.SavePath = station.outputText();
    host.options.ReNameFormat = kNameOfDocumentAndPage;
    host.options.IsCreateBatchFolder = true;
    writeBytes(station.native("beside/keep"), "kept");
  }

  // Runs until all batches are exported or one has failed. `event` happens after the first
  // document.
  void run(const std::function<void()>& event = {}) {
    bool happened = false;
    host.lines.clear();
    host.window.boxes.clear();
    host.whenLineAdded = [&](const std::string& line) {
      if (line.find("失败") != line.npos) {
        host.setIsStopRequested(true);
        if (whenFailed) std::exchange(whenFailed, {})();
      }
      if (event && line == "D1 导出成功！" && !std::exchange(happened, true)) event();
    };
    RunOutPutBatch(host);
    EXPECT_EQ(happened, event != nullptr);
  }

  std::string reported() const {
    std::string text;
    for (const std::string& line : host.lines) text += line + "\n";
    for (const Box& box : host.window.boxes) text += toUtf8(box.text) + "\n";
    for (const std::wstring& entry : station.logEntries()) text += toUtf8(entry) + "\n";
    return text;
  }

  ExportStation station;
  JournalHost host;
  std::function<void()> whenFailed;  // called once
};

TEST_F(DisturbedRun, EachDisturbanceIsReportedAndTheNextRunFinishes) {
  const auto out = [&] { return station.output(); };
  const auto database = station.native("Orvane.dll");
  const auto source = [&] { return station.scan("B1/D2/P.tif"); };
  const auto docDat = [&] { return station.scan("B1/D2/Doc.dat"); };
  const auto aside = [](const fs::path& path) { fs::rename(path, path.string() + ".aside"); };
  const auto back = [](const fs::path& path) {
    fs::remove_all(path);
    fs::rename(path.string() + ".aside", path);
  };
  std::string damagedPage = outputOf(
      "convert -size 40x30 gradient: -ordered-dither o8x8 -monochrome -compress group4 tif:-");
  damagedPage.replace(8, 20, 20, '\0');  // the first rows
  const fs::path largePage = station.native("large.tif");
  station.shell("convert -size 900x900 gradient: -compress LZW large.tif");
  const std::string batchFailed = "成果输出失败！", updateFailed = "档案导出数字化成果失败！";
  const struct {
    const char* what;
    std::function<void()> event, repair;
    std::string report, remark;
  } cases[] = {
      {"the output folder is removed", [&] { fs::remove_all(out()); },
       [&] { fs::create_directory(out()); }, "输出文件夹无法访问：", batchFailed},
      {"another folder takes the place of the output folder",
       [&] { aside(out()), writeBytes(out() / "B1/D1001.tif", "of another disk"); },
       [&] {
         EXPECT_EQ(readBytes(out() / "B1/D1001.tif"), "of another disk");
         EXPECT_EQ(station.outputTree().size(), 2u);
         back(out());
       },
       "输出文件夹已不是原来的那一个，不能导出：" + toUtf8(station.outputText()), batchFailed},
      {"a file takes the place of the output folder",
       [&] { aside(out()), writeBytes(out(), "a file"); }, [&] { back(out()); },
       "输出文件夹已不是原来的那一个", batchFailed},
      {"the output folder becomes read-only",
       [&] { fs::permissions(out() / "B1", fs::perms{0555}); }, [] {}, "Permission denied",
       batchFailed},
      {"the log folder is not writable and a page is missing",
       [&] {
         aside(source()), fs::remove_all(station.native("Log"));
         writeBytes(station.native("Log"), "a file");
       },
       [&] { back(source()), fs::remove(station.native("Log")); }, "D2 导出失败！", batchFailed},
      {"the page list is a folder", [&] { aside(docDat()), fs::create_directory(docDat()); },
       [&] { back(docDat()); }, "Doc.dat: Is a directory", batchFailed},
      {"the document is gone", [&] { aside(station.scan("B1/D2")); },
       [&] { back(station.scan("B1/D2")); }, "B1\\D2\\: No such file", batchFailed},
      {"the batch is gone", [&] { aside(station.scan("B1")); },
       [&] {
         EXPECT_EQ(station.outputTree().size(), 0u);
         back(station.scan("B1"));
       },
       "B1\\D2\\: No such file", batchFailed},
      {"no thread can be created", [&] { armFaults(out().c_str(), kThread, Fault::FailOnward, 1); },
       [] { disarmFaults(); }, "档案导出成果成功！", ""},
      {"the page list may not be read", [&] { fs::permissions(docDat(), fs::perms{0}); },
       [&] { fs::permissions(docDat(), fs::perms{0644}); }, "Doc.dat: Permission denied",
       batchFailed},
      {"the working directory is removed",
       [&] {
         fs::create_directory(out() / "gone"), fs::current_path(out() / "gone");
         fs::remove(out() / "gone");
       },
       [] { fs::current_path("/"); }, "档案导出成果成功！", ""},
#ifndef __SANITIZE_ADDRESS__
      {"memory is exhausted",
       [&] {
         aside(source()), fs::copy_file(largePage, source());
         armFaults(out().c_str(), kMemory, Fault::FailOnward, 1);
       },
       [&] { disarmFaults(), back(source()); }, "P.tif: Cannot allocate memory", batchFailed},
#endif
      {"the disk is full", [&] { armFaults(out().c_str(), kWrite, Fault::FailOnward, 1); },
       [] { disarmFaults(); }, "D2001.tif: No space left on device", batchFailed},
      {"syncing the disk fails", [&] { armFaults(out().c_str(), kSync, Fault::Fail, 1); },
       [] { disarmFaults(); }, "B1: Input/output error", batchFailed},
      {"a page is damaged", [&] { aside(source()), writeBytes(source(), damagedPage); },
       [&] { back(source()); }, "P.tif: the page cannot be decoded: ", batchFailed},
      {"a page is a folder", [&] { aside(source()), fs::create_directory(source()); },
       [&] { back(source()); }, "P.tif: Is a directory", batchFailed},
      {"a page is a link to nothing",
       [&] { aside(source()), fs::create_symlink("nothing", source()); }, [&] { back(source()); },
       "P.tif: No such file", batchFailed},
      {"a page is a link to itself",
       [&] { aside(source()), fs::create_symlink("P.tif", source()); }, [&] { back(source()); },
       "P.tif: Too many levels of symbolic links", batchFailed},
      {"a page is a pipe", [&] { aside(source()), mkfifo(source().c_str(), 0666); },
       [&] { back(source()); }, "P.tif: Invalid argument", batchFailed},
      {"the database is locked until the failure is reported",
       [&] {
         sqlite3* other = nullptr;
         sqlite3_open(database.c_str(), &other);
         ASSERT_EQ(sqlite3_exec(other, "begin immediate", nullptr, nullptr, nullptr), SQLITE_OK);
         whenFailed = [other] { sqlite3_close(other); };
         host.setIsStopRequested(true);  // shortens the wait for the lock
       },
       [] {}, "UpdateBatchInfo :database is locked", batchFailed},
      {"the database is removed", [&] { aside(database); }, [&] { back(database); }, updateFailed,
       ""},
      {"the database is replaced by its copy",
       [&] {
         fs::copy_file(database, database.string() + ".copy"), aside(database),
             fs::rename(database.string() + ".copy", database);
       },
       [&] { fs::remove(database.string() + ".aside"); }, "档案导出成果成功！", ""},
      {"the database is overwritten with garbage",
       [&] {
         fs::copy_file(database, database.string() + ".aside"), fs::resize_file(database, 100),
             std::ofstream(database, std::ios::in) << std::string(100, 'x');
       },
       [&] { back(database); }, updateFailed, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    for (const char* name : {"Batchs", "output", "Log"}) fs::remove_all(station.native(name));
    fs::create_directory(out());
    station.createTable({"B1"});
    for (const char* name : {"B1/D1", "B1/D2", "B1/D3"}) station.addDocument(name, {"P"});
    runCommand("chown -R 65534 " + quoted(station.native()));  // succeeds only for root
    const auto scans = station.scanTree();
    {
      const AsOrdinaryUser user;
      run(c.event);
      EXPECT_NE(reported().find(c.report), std::string::npos) << reported();
      c.repair();
    }
    EXPECT_EQ(station.scanTree(), scans);
    if (!c.remark.empty()) {
      EXPECT_EQ(station.stateOf("B1"), "完成扫描|" + c.remark);
    }
    {
      const AsOrdinaryUser user;
      run();
    }
    EXPECT_EQ(station.stateOf("B1").substr(0, std::string("完成成果输出").size()), "完成成果输出")
        << reported();
  }
  EXPECT_EQ(readBytes(station.native("beside/keep")), "kept");
}

TEST_F(DisturbedRun, OnAFileSystemInUserSpaceEveryFileAndFolderIsSynced) {
  host.options.ReNameFormat = kNameOfPage;
  station.addDocument("B1/D1", {"P", "P"});
  station.addDocument("B1/D2", {"P"});  // replaces the first page of D1
  long syncs = 0;
  const auto exported = [&](Fault fault, long at) {
    station.createTable({"B1"});
    armFaults(station.output().c_str(), kSync | kFuse, fault, at);
    run();
    syncs = disarmFaults();
    return station.stateOf("B1");
  };
  EXPECT_EQ(exported(Fault::None, 0), "完成成果输出|");
  EXPECT_EQ(syncs, 4) << "two files, output and output/B1";
  for (long at = 1; at <= 4; ++at) {
    EXPECT_EQ(exported(Fault::FailOnward, at), "完成扫描|成果输出失败！");
  }
  EXPECT_NE(reported().find("B1\\002.tif: Input/output error"), std::string::npos) << reported();
}

TEST_F(DisturbedRun, SettingsAreSavedEvenIfOwnersAndModesCannotBeChanged) {
  std::wstring section = L"S", key = L"k", values[] = {L"1", L"2"};
  armFaults(station.native().c_str(), kOwner, Fault::FailOnward, 1);
  for (std::wstring& value : values) {
    mdlINI::WriteIniValue(station.path(L"data.ini"), section, key, value);
  }
  disarmFaults();
  EXPECT_EQ(station.read("data.ini"), "[S]\r\nk=2\r\n");
}

TEST_F(DisturbedRun, NoNameLeadsOutOfTheOutputFolderOrChangesAnotherRow) {
  const struct {
    std::wstring name;
    bool isPageName;  // it can be in a page list
    std::string outcome;
  } cases[] = {
      {L"it's \"quoted\"`", true, "exported"},
      {L"B0' or '1'='1", true, "exported"},
      {L"100%s%n%", true, "exported"},
      {L"$(touch x);&|<>*?", false, "exported"},
      {L"-rf", true, "exported"},
      {L"..x..", true, "exported"},
      {L"...", true, "exported"},
      {L" blanks ", true, "exported"},
      {L"tab\t\x01 line\r\nend", true, "exported"},
      {L"\U0001F600\u00F6", false, "exported"},  // outside code page 936
      {std::wstring(255, L'n'), false, "File name too long"},
      {L"..", false, "档案扫描件找不到！"},
      {L"../beside", false, "档案扫描件找不到！"},
      {L"..\\beside", false, "档案扫描件找不到！"},
  };
  host.stopAfterBatch = true;
  for (const auto& [name, isPageName, expected] : cases) {
    const std::string bytes = toUtf8(name);
    SCOPED_TRACE(bytes);
    for (const char* folder : {"Batchs", "output", "Log"}) fs::remove_all(station.native(folder));
    fs::create_directories(station.output());
    station.createTable({"B0"});
    station.query("update T_BatchInfo set CreateDate='2030'");
    mdlDataBase::OpenConnection();
    gConnection->execute(L"insert into T_BatchInfo values (?, '完成扫描', '2020', 1, null)",
                         {name});
    if (name.find(L"..\\") != 0 && name.find(L"../") != 0 && name != L"..") {
      const fs::path document = station.scan(bytes + "/" + bytes);
      writeBytes(document / "P.tif", ExportStation::grayPage());
      if (isPageName) writeBytes(document / (bytes + ".tif"), ExportStation::grayPage());
      writeBytes(document / "Doc.dat", "P$" + (isPageName ? toAnsi(name) + "$" : ""));
    }
    const auto around = [&] {
      auto tree = ExportStation::contentOf(station.native());
      std::erase_if(tree, [](const auto& entry) {
        return entry.first.starts_with("output") || entry.first.starts_with("Log") ||
               entry.first == "Orvane.dll";
      });
      return tree;
    };
    const auto before = around();
    host.window.boxes.clear();
    host.lines.clear();
    RunOutPutBatch(host);
    EXPECT_EQ(around(), before);
    const bool isExported = expected == "exported";
    EXPECT_EQ(station.outputFiles().size(), isExported ? (isPageName ? 2u : 1u) : 0u) << reported();
    for (const std::string& file : station.outputFiles()) {
      EXPECT_TRUE(file.starts_with(bytes + "/" + bytes)) << file;
    }
    const auto row =
        gConnection->query(L"select BatchState from T_BatchInfo where BatchID<>'B0'", true).at(0);
    EXPECT_EQ(row[0].text(), isExported ? L"完成成果输出" : L"完成扫描");
    EXPECT_EQ(station.stateOf("B0"), "完成扫描|");
  }
}

}  // namespace
}  // namespace orvane::test
