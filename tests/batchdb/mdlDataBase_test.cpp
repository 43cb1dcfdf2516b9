// The program's one connection: its test, its single retry, its boxes and log lines.

#include "batchdb/mdlDataBase.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>

#include "batchdb/BatchStore.h"
#include "batchdb/SqliteStore.h"
#include "foundation/Failure.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using namespace mdlDataBase;

const std::string kOpenFailed = "OpenConnection Err:unable to open database file";
const std::string kNoConnection =
    "Error on opening database:there is no open connection to the database";

class BatchDatabase : public testing::Test {
 protected:
  BatchDatabase() { gConnection.reset(); }
  ~BatchDatabase() override { setBatchStoreFactory({}); }

  // Replaces Orvane.dll by another file with rows of name, state, date, pages and remark.
  void makeDatabase(const std::string& rows) const {
    station.shell("sqlite3 fresh " +
                  quoted("create table T_BatchInfo (BatchID text, BatchState text, CreateDate "
                         "text, PaperNum integer, Remark text); insert into T_BatchInfo values " +
                         rows) +
                  "; mv fresh Orvane.dll");
  }
  // The name of the oldest batch whose scan is finished.
  std::wstring oldestBatch() {
    constexpr const wchar_t* kQuery =
        L"select top 1 * from T_BatchInfo where BatchState='完成扫描' order by  CreateDate";
    if (!OpenRecordset(rs, kQuery, true)) return L"failed";
    return rs.RecordCount() == 0 ? L"none" : rs.Fields(L"BatchID").text();
  }
  // Since the last call, each of these texts was shown in a box and written to the log.
  void expectTold(const std::vector<std::string>& texts) {
    const std::string source = "Orvane成果导出[mdlDataBase]";
    std::string boxes, log;
    for (const std::string& text : texts) {
      boxes += text + " | " + source + " | !\n";
      log += source + ":" + text + "\n";
    }
    EXPECT_EQ(window.takeBoxes(), boxes);
    EXPECT_EQ(station.takeLog(), log);
  }

  TempStation station;
  RecordingWindow window;
  Recordset rs;
};

TEST_F(BatchDatabase, FindsTheOldestBatchAndRecordsWhatBecameOfIt) {
  makeDatabase(
      "('B2','完成扫描','2022-04-12',3,null),('B''1','完成扫描','2022-04-11',3,'old'),"
      "('B0','扫描中','2022-04-10',3,null)");
  EXPECT_EQ(oldestBatch(), L"B'1");
  EXPECT_TRUE(UpdateBatchInfo(L"B'1", L"完成成果输出"));
  EXPECT_EQ(oldestBatch(), L"B2");
  EXPECT_TRUE(AddBatchRemark(L"B2", L"失败！'; drop table T_BatchInfo; --"));
  EXPECT_TRUE(UpdateBatchInfo(L"B9", L"完成成果输出"));
  EXPECT_EQ(station.shell("sqlite3 Orvane.dll 'select BatchID, BatchState, Remark from "
                          "T_BatchInfo order by BatchID'"),
            "B'1|完成成果输出|old\nB0|扫描中|\nB2|完成扫描|失败！'; drop table T_BatchInfo; --\n");
  EXPECT_TRUE(UpdateBatchInfo(L"B2", L"完成成果输出"));
  EXPECT_EQ(oldestBatch(), L"none");
  expectTold({});
}

TEST_F(BatchDatabase, AnAbsentFileCostsTwoBoxesAQueryAndOneAnUpdate) {
  EXPECT_EQ(oldestBatch(), L"failed");
  expectTold({kOpenFailed, kNoConnection});
  EXPECT_FALSE(UpdateBatchInfo(L"B1", L"x") || AddBatchRemark(L"B1", L"x"));
  expectTold({kOpenFailed, kOpenFailed});
  EXPECT_EQ(station.shell("ls"), "Log\n");

  makeDatabase("('B1','完成扫描','2022-04-11',3,null)");  // the file exists now
  EXPECT_EQ(oldestBatch(), L"B1");
  makeDatabase("('B7','完成扫描','2022-04-11',3,null)");  // another file: opened without a message
  EXPECT_EQ(oldestBatch(), L"B7");
  expectTold({});
  station.shell("rm Orvane.dll");
  EXPECT_FALSE(EnsureConnection(false));  // the proof fails, and so does the one new open
  expectTold({kOpenFailed});
}

TEST_F(BatchDatabase, AStatementThatFailsIsLoggedWithTheTextOfTheStore) {
  station.shell("sqlite3 Orvane.dll 'create table Other (x)'");
  EXPECT_EQ(oldestBatch(), L"failed");
  expectTold({"Error on opening database:no such table: T_BatchInfo"});
  EXPECT_FALSE(UpdateBatchInfo(L"B1", L"x") || AddBatchRemark(L"B1", L"x"));
  EXPECT_EQ(station.takeLog(),
            "Orvane成果导出[mdlDataBase]:UpdateBatchInfo :no such table: T_BatchInfo\n"
            "Orvane成果导出[mdlDataBase]:AddBatchRemark :no such table: T_BatchInfo\n");
  expectTold({});
}

TEST_F(BatchDatabase, ALockIsWaitedForWithTheWindowAliveUntilItIsFreeOrTheOperatorStops) {
  using namespace std::chrono_literals;
  const std::pair<std::function<bool()>, std::string> statements[] = {
      {[&] { return oldestBatch() == L"B1"; }, "Error on opening database:"},
      {[] { return UpdateBatchInfo(L"B1", L"完成扫描"); }, "UpdateBatchInfo :"},
      {[] { return AddBatchRemark(L"B1", L"失败！"); }, "AddBatchRemark :"},
      {[] { return gConnection.reset(), EnsureConnection(false); }, "OpenConnection Err:"}};
  const struct {
    std::chrono::milliseconds longest, longestAfterStop;
    int freeAt, stopAt;  // the yield in which it happens, or never
    int yields;          // or some
  } waits[] = {{10min, 10min, 3, -1, 3},
               {40ms, 10min, -1, -1, -1},
               {10min, 10min, -1, 3, 3},
               {10min, 40ms, -1, 0, -1}};  // stop was pressed before
  for (const auto& wait : waits) {
    makeDatabase("('B1','完成扫描','2022-04-11',3,null)");
    for (const auto& [run, prefix] : statements) {
      SCOPED_TRACE(prefix + std::to_string(&wait - waits));
      bool stop = wait.stopAt == 0;
      setBatchStoreFactory([&] {
        return std::make_unique<SqliteStore>(
            LockPatience{wait.longest, wait.longestAfterStop, [&stop] { return stop; }, 1ms});
      });
      ASSERT_TRUE(EnsureConnection(false));
      SqliteStore scanningStation;
      scanningStation.open(station.path(L"Orvane.dll"));
      scanningStation.execute(L"begin exclusive");
      window.yields = 0;
      window.onYield = [&] {
        EXPECT_FALSE(waitingBatches());  // neither waits nor disturbs the waiting statement
        if (window.yields == wait.freeAt) scanningStation.execute(L"commit");
        if (window.yields == wait.stopAt) stop = true;
      };
      EXPECT_EQ(run(), wait.freeAt > 0);
      EXPECT_TRUE(wait.yields < 0 ? window.yields > 0 : window.yields == wait.yields)
          << window.yields;
      const std::string log = station.takeLog();
      const bool isEndedByStop = wait.stopAt > 0;
      const std::string told =
          isEndedByStop ? "按了“停止”，不再等待数据库，没有出错（" : "database is locked\n";
      EXPECT_EQ(log.find(prefix + told) != log.npos, wait.freeAt < 0) << log;
    }
  }
}

TEST_F(BatchDatabase, TellsWhatWaitsWithItsPagesWhereTheTableNamesThemAllAndNoFailure) {
  EXPECT_FALSE(waitingBatches());
  EXPECT_TRUE(isDatabaseMissing());
  station.shell("sqlite3 Orvane.dll 'create table Other (x)'");
  EXPECT_FALSE(waitingBatches() || isDatabaseMissing());
  const std::string row = "('B','完成扫描','2022-04-12',", end = ",null)";
  const std::pair<std::string, std::optional<std::int64_t>> cases[] = {
      {"30000", 60000}, {"'30000'", 60000}, {"0", {}},  {"-1", {}},
      {"32768", {}},    {"null", {}},       {"'x'", {}}};
  for (const auto& [PaperNum, pages] : cases) {
    SCOPED_TRACE(PaperNum);
    makeDatabase("('B0','扫描中','2022-04-10',3,null)," + row + "30000" + end + "," + row +
                 PaperNum + end);
    const auto waiting = waitingBatches();
    ASSERT_TRUE(waiting);
    EXPECT_EQ(waiting->count, 2);
    EXPECT_EQ(waiting->pages, pages ? pages : std::nullopt);
  }
  makeDatabase("('B0','扫描中','2022-04-10',3,null)");
  EXPECT_EQ(waitingBatches()->count, 0);
  expectTold({});
}

TEST_F(BatchDatabase, ARemarkThatIsThereAlreadyIsNotWrittenAgain) {
  makeDatabase("('B1','完成扫描','2022-04-11',3,null),('B2','完成扫描','2022-04-12',3,'other')");
  for (const wchar_t* batch : {L"B1", L"B2", L"B9"}) {
    EXPECT_TRUE(AddBatchRemark(batch, L"失败！"));
    const std::string written = station.read("Orvane.dll");  // with SQLite's count of changes
    SqliteStore scanningStation;
    scanningStation.open(station.path(L"Orvane.dll"));
    scanningStation.execute(L"begin immediate");  // a second writer would wait
    EXPECT_TRUE(AddBatchRemark(batch, L"失败！"));
    EXPECT_EQ(window.yields, 0);
    EXPECT_EQ(station.read("Orvane.dll"), written);
  }
  EXPECT_EQ(station.shell("sqlite3 Orvane.dll 'select Remark from T_BatchInfo'"),
            "失败！\n失败！\n");
}

// A store that claims to be open but fails: at its test, or when its state is read after the test.
class DeadStore : public BatchStore {
 public:
  explicit DeadStore(bool failsProof) : failsProof_(failsProof) {}
  void open(const std::wstring&) override { throw Failure("dead"); }
  bool isOpen() const override { return isProved_ ? throw Failure("dead") : true; }
  void execute(const std::wstring&, const std::vector<std::wstring>&) override {
    if (failsProof_) throw Failure("dead");
    isProved_ = true;
  }
  std::vector<Row> query(const std::wstring&, bool, const std::vector<std::wstring>&) override {
    throw Failure("dead");
  }

 private:
  bool failsProof_;
  bool isProved_ = false;
};

TEST_F(BatchDatabase, OnlyAFailedProofIsRetriedAndOnlyOnce) {
  for (const bool failsProof : {true, false}) {
    int made = 0;
    setBatchStoreFactory([&made, failsProof] {
      ++made;
      return std::make_unique<DeadStore>(failsProof);
    });
    EXPECT_FALSE(EnsureConnection(false));
    EXPECT_EQ(made, failsProof ? 2 : 1);
  }
  expectTold({});
}

// One connection to one SQLite file, made and judged with the sqlite3 tool.
class SqliteFile : public testing::Test {
 protected:
  SqliteFile() { sqlite("create table T (ID, Name text, Num)"); }
  std::string sqlite(const std::string& sql) const {
    return station.shell("sqlite3 Orvane.dll " + quoted(sql));
  }
  TempStation station;
  RecordingWindow window;
  SqliteStore store;
  Recordset rs;
};

TEST_F(SqliteFile, OpensOnlyADatabaseThatIsThere) {
  station.shell("yes | head -c 5000 > foreign; head -c 60 Orvane.dll > cut; mkdir folder");
  const std::pair<const wchar_t*, std::string> cases[] = {
      {L"Orvane.dll", ""},
      {L"missing", "unable to open database file"},
      {L"folder", "unable to open database file"},
      {L"foreign", "file is not a database"},
      {L"cut", "database disk image is malformed"}};
  for (const auto& [name, text] : cases) {
    SqliteStore opened;
    EXPECT_EQ(failureOf([&, file = name] { opened.open(station.path(file)); }), text);
    EXPECT_EQ(opened.isOpen(), text == "");
  }
  EXPECT_EQ(station.shell("ls"), "Orvane.dll\ncut\nfolder\nforeign\n");
}

TEST_F(SqliteFile, AQueryGivesItsRowsByTheNamesOfTheirFields) {
  sqlite("insert into T values (3,'丙',null),(1,'甲',2.5),(2,'乙','7 ')");
  store.open(station.path(L"Orvane.dll"));
  EXPECT_THROW(rs.RecordCount(), Failure);
  rs.Open(&store, L"SELECT Top 2 * from T order by  ID ; ", true);
  EXPECT_EQ(rs.RecordCount(), 2);
  EXPECT_EQ(rs.Fields(L"nAME").text() + rs.Fields(L"id").text() + rs.Fields(L"Num").text(),
            L"甲12.5");
  EXPECT_EQ(failureOf([&] { rs.Fields(L"Other"); }), "there is no field Other");
  rs.Open(&store, L"select * from T where ID > 9", true);
  EXPECT_EQ(rs.RecordCount(), 0);
  EXPECT_THROW(rs.Fields(L"ID"), Failure);

  EXPECT_EQ(failureOf([&] { rs.Open(&store, L"delete from T", true); }),
            "attempt to write a readonly database");
  EXPECT_FALSE(rs.IsOpen());
  EXPECT_THROW(rs.Open(nullptr, L"select 1", true), Failure);
  EXPECT_EQ(sqlite("select count(*) from T"), "3\n");
}

}  // namespace
}  // namespace orvane::test
