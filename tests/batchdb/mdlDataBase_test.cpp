// The one connection beside the program: its proof, its single retry, its boxes and log lines.

#include "batchdb/mdlDataBase.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <utility>

#include "foundation/Failure.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;
using namespace mdlDataBase;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const wchar_t* kQuery =
    L"select top 1 * from T_BatchInfo where BatchState='完成扫描' order by  CreateDate";
constexpr const wchar_t* kSource = L"Orvane成果导出[mdlDataBase]";

const Box kOpenBox{L"OpenConnection Err:unable to open database file", kSource, BoxIcon::Critical};
const Box kQueryBox{L"Error on opening database:there is no open connection to the database",
                    kSource, BoxIcon::Critical};

class BatchDatabase : public testing::Test {
 protected:
  BatchDatabase() { gConnection.reset(); }
  ~BatchDatabase() override { setBatchStoreFactory({}); }

  // Makes Orvane.dll anew, with batches that are in the state of a finished scan.
  void makeDatabase(const std::string& rows) {
    const fs::path fresh = station.native("fresh");
    outputOf("sqlite3 " + quoted(fresh) + " " +
             quoted("create table T_BatchInfo (BatchID text, BatchState text, CreateDate text, "
                    "PaperNum integer, Remark text); insert into T_BatchInfo values " +
                    rows));
    fs::rename(fresh, file);
  }
  std::string rows() const {
    return outputOf("sqlite3 " + quoted(file) +
                    " 'select BatchID, BatchState, Remark from T_BatchInfo order by BatchID'");
  }
  // The boxes since the last call; each stands in the log as well.
  std::vector<Box> newBoxes() {
    std::vector<std::wstring> lines;
    for (const Box& box : window.boxes) {
      lines.push_back(L"Orvane成果导出 - " + box.title + L":" + box.text);
    }
    EXPECT_EQ(station.logEntries(), lines);
    fs::remove_all(station.native("Log"));
    return std::exchange(window.boxes, {});
  }
  std::wstring oldestBatch() {
    if (!OpenRecordset(rs, kQuery, true)) return L"failed";
    return rs.RecordCount() == 0 ? L"none" : rs.Fields(L"BatchID").text();
  }

  TempStation station;
  RecordingWindow window;
  Recordset rs;
  fs::path file = station.native("Orvane.dll");
};

TEST_F(BatchDatabase, FindsTheOldestBatchAndRecordsWhatBecameOfIt) {
  makeDatabase(
      "('B2','完成扫描','2022-04-12',3,null),('B''1','完成扫描','2022-04-11',3,'old'),"
      "('B0','扫描中','2022-04-10',3,null)");
  EXPECT_EQ(oldestBatch(), L"B'1");
  EXPECT_TRUE(UpdateBatchInfo(L"B'1", L"完成成果输出"));
  EXPECT_EQ(oldestBatch(), L"B2");
  EXPECT_TRUE(AddBatchRemark(L"B2", L"成果输出失败！'; drop table T_BatchInfo; --"));
  EXPECT_TRUE(UpdateBatchInfo(L"B9", L"完成成果输出"));
  EXPECT_EQ(rows(),
            "B'1|完成成果输出|old\nB0|扫描中|\n"
            "B2|完成扫描|成果输出失败！'; drop table T_BatchInfo; --\n");
  EXPECT_TRUE(UpdateBatchInfo(L"B2", L"完成成果输出"));
  EXPECT_EQ(oldestBatch(), L"none");
  EXPECT_THAT(newBoxes(), IsEmpty());
}

TEST_F(BatchDatabase, AnAbsentFileCostsTwoBoxesAQueryAndOneAnUpdate) {
  EXPECT_EQ(oldestBatch(), L"failed");
  EXPECT_THAT(newBoxes(), ElementsAre(kOpenBox, kQueryBox));
  EXPECT_FALSE(UpdateBatchInfo(L"B1", L"x"));
  EXPECT_THAT(newBoxes(), ElementsAre(kOpenBox));
  EXPECT_FALSE(AddBatchRemark(L"B1", L"x"));
  EXPECT_THAT(newBoxes(), ElementsAre(kOpenBox));
  EXPECT_FALSE(fs::exists(file));

  makeDatabase("('B1','完成扫描','2022-04-11',3,null)");  // the station has it now
  EXPECT_EQ(oldestBatch(), L"B1");
  EXPECT_THAT(newBoxes(), IsEmpty());
}

TEST_F(BatchDatabase, AReplacedFileIsOpenedAnewWithoutAWord) {
  makeDatabase("('B1','完成扫描','2022-04-11',3,null)");
  EXPECT_EQ(oldestBatch(), L"B1");
  makeDatabase("('B7','完成扫描','2022-04-11',3,null)");
  EXPECT_EQ(oldestBatch(), L"B7");
  EXPECT_THAT(newBoxes(), IsEmpty());

  fs::remove(file);
  EXPECT_FALSE(EnsureConnection(false));  // the proof fails, and so does the one new open
  EXPECT_THAT(newBoxes(), ElementsAre(kOpenBox));
  EXPECT_EQ(oldestBatch(), L"failed");
  EXPECT_THAT(newBoxes(), ElementsAre(kOpenBox, kQueryBox));
}

TEST_F(BatchDatabase, AStatementThatFailsIsLoggedWithTheTextOfTheStore) {
  outputOf("sqlite3 " + quoted(file) + " 'create table Other (x)'");
  EXPECT_EQ(oldestBatch(), L"failed");
  EXPECT_THAT(newBoxes(), ElementsAre(Box{L"Error on opening database:no such table: T_BatchInfo",
                                          kSource, BoxIcon::Critical}));
  EXPECT_FALSE(UpdateBatchInfo(L"B1", L"x"));
  EXPECT_FALSE(AddBatchRemark(L"B1", L"x"));
  EXPECT_THAT(station.logEntries(),
              ElementsAre(std::wstring(L"Orvane成果导出 - ") + kSource +
                              L":UpdateBatchInfo :no such table: T_BatchInfo",
                          std::wstring(L"Orvane成果导出 - ") + kSource +
                              L":AddBatchRemark :no such table: T_BatchInfo"));
  EXPECT_THAT(window.boxes, IsEmpty());
}

// A store that says it is open but fails: its proof, or the reading of its state behind the proof.
class DeadStore : public BatchStore {
 public:
  explicit DeadStore(bool failsProof) : failsProof_(failsProof) {}
  void open(const std::wstring&) override { throw Failure("dead"); }
  bool isOpen() const override {
    if (isProved_) throw Failure("dead");
    return true;
  }
  void execute(const std::wstring&, const std::vector<std::wstring>&) override {
    if (failsProof_) throw Failure("dead");
    isProved_ = true;
  }
  std::vector<Row> query(const std::wstring&, bool) override { throw Failure("dead"); }

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
  EXPECT_THAT(newBoxes(), IsEmpty());
}

}  // namespace
}  // namespace orvane::test
