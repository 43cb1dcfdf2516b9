#include "batchdb/mdlDataBase.h"

#include <chrono>
#include <exception>
#include <utility>

#include "batchdb/SqliteStore.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"

namespace orvane {

std::unique_ptr<BatchStore> gConnection;

namespace mdlDataBase {
namespace {

BatchStoreFactory storeFactory;
std::function<bool()> stopTest;  // of the current run

bool isStopRequested() {
  return stopTest && stopTest();
}

std::wstring databaseFile() {
  return programFolder() + L"\\Orvane.dll";
}

void makeConnectionIfAbsent() {
  if (gConnection) return;
  gConnection =
      storeFactory
          ? storeFactory()
          : std::make_unique<SqliteStore>(LockPatience{.isStopRequested = isStopRequested});
}

Outcome failInLog(const std::wstring& prefix, const std::exception& failure, bool bShowBox) {
  const std::wstring message = prefix + description(failure);
  mdlFolderAndFile::LogWrite(message, std::wstring(kApplicationTitle) + L"[mdlDataBase]", bShowBox);
  return Outcome::failed(message);
}

Outcome openConnection() {
  try {
    makeConnectionIfAbsent();
    gConnection->open(databaseFile());
    return {};
  } catch (const std::exception& failure) {
    return failInLog(L"OpenConnection Err:", failure, true);
  }
}

Outcome ensureConnection(bool bRetrying) {
  bool bProving = true;
  try {
    makeConnectionIfAbsent();
    if (gConnection->isOpen()) gConnection->execute(L"Select '1'");
    bProving = false;
    return gConnection->isOpen() ? Outcome{} : openConnection();
  } catch (const std::exception&) {
    if (bRetrying || !bProving) return {.ok = false};
  }
  gConnection.reset();  // the retry makes a new one
  return ensureConnection(true);
}

}  // namespace

bool EnsureConnection(bool bRetrying) {
  return ensureConnection(bRetrying).ok;
}

bool OpenConnection() {
  return openConnection().ok;
}

bool OpenRecordset(Recordset& rs, const std::wstring& sSql, bool bReadOnly) {
  try {
    if (rs.IsOpen()) rs.Close();
    // Without a connection `Open` fails and shows a box of its own.
    BatchStore* const activeConnection = EnsureConnection(false) ? gConnection.get() : nullptr;
    if (activeConnection == nullptr && isStopRequested()) {
      throw Failure(L"按了“停止”，不再等待数据库，没有出错");
    }
    rs.Open(activeConnection, sSql, bReadOnly);
    return true;
  } catch (const std::exception& failure) {
    return failInLog(L"Error on opening database:", failure, true).ok;
  }
}

bool UpdateBatchInfo(const std::wstring& sBatchID, const std::wstring& sBatchState) {
  return updateBatchState(sBatchID, sBatchState).ok;
}

Outcome updateBatchState(const std::wstring& sBatchID, const std::wstring& sBatchState) {
  try {
    Outcome connection = ensureConnection(false);
    if (!connection.ok) return connection;
    gConnection->execute(L" Update T_BatchInfo Set  BatchState=?  Where BatchID=?",
                         {sBatchState, sBatchID});
    return {};
  } catch (const std::exception& failure) {
    return failInLog(L"UpdateBatchInfo :", failure, false);
  }
}

bool AddBatchRemark(const std::wstring& sBatchID, const std::wstring& sRemark) {
  try {
    if (!EnsureConnection(false)) return false;
    // A failing batch is tried again at once; a write would wait for the disk and for readers.
    const auto rowsToChange =
        gConnection->query(L"select top 1 * from T_BatchInfo where BatchId =? and Remark is not ?",
                           true, {sBatchID, sRemark});
    if (rowsToChange.empty()) return true;
    gConnection->execute(L"update T_BatchInfo set Remark =? where BatchId =?", {sRemark, sBatchID});
    return true;
  } catch (const std::exception& failure) {
    return failInLog(L"AddBatchRemark :", failure, false).ok;
  }
}

std::optional<WaitingBatches> waitingBatches() {
  constexpr std::chrono::milliseconds none(0);
  try {
    SqliteStore store({.longest = none, .longestAfterStop = none});
    store.open(databaseFile());
    Recordset sums;
    sums.Open(&store,
              L"select count(*) as Batches, sum(PaperNum+0) as Pages,"
              L" sum(case when PaperNum+0 between 1 and 32767 then 0 else 1 end) as Unknown"
              L" from T_BatchInfo where BatchState='完成扫描'",
              true);
    const auto number = [&](const wchar_t* name) {
      const Field& field = sums.Fields(name);
      return field.isNull() ? 0 : static_cast<std::int64_t>(numericPrefix(field.text()));
    };
    WaitingBatches waiting{.count = number(L"Batches"), .pages = {}};
    if (number(L"Unknown") == 0) waiting.pages = number(L"Pages");
    return waiting;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

bool isDatabaseMissing() {
  try {
    return !mdlFolderAndFile::fileSystem().FileExists(databaseFile());
  } catch (const std::exception&) {
    return false;
  }
}

StopEndsLockWait::StopEndsLockWait(std::function<bool()> isStopRequested) {
  stopTest = std::move(isStopRequested);
}

StopEndsLockWait::~StopEndsLockWait() {
  stopTest = nullptr;
}

void setBatchStoreFactory(BatchStoreFactory factory) {
  storeFactory = std::move(factory);
  gConnection.reset();
}

}  // namespace mdlDataBase
}  // namespace orvane
