#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "batchdb/BatchStore.h"
#include "foundation/Outcome.h"

namespace orvane {

/// The program's one connection to `Orvane.dll`, the batch database in the program's folder. It is
/// made at first use and never closed explicitly: it is replaced, or ends with the process.
extern std::unique_ptr<BatchStore> gConnection;

/// The batches that wait for their export.
struct WaitingBatches {
  std::int64_t count = 0;
  std::optional<std::int64_t> pages;  ///< the sum of `PaperNum`; none unless each is 1 to 32767
};

/// The statements on the batch table. None throws: a failure is logged and gives false.
namespace mdlDataBase {

/// Makes sure that the connection is open and usable. An open one is tested by a statement; one
/// that fails the test is dropped and made again, once. Reports nothing itself. Callers pass false.
bool EnsureConnection(bool bRetrying);

/// Opens the connection. A failure is logged and shown in a box.
bool OpenConnection();

/// Runs a query into `rs`, which is closed first when it is open. A failure is logged and shown in
/// a box.
bool OpenRecordset(Recordset& rs, const std::wstring& sSql, bool bReadOnly);

/// Sets the state of a batch. True when the statement ran, also when no row has that ID.
bool UpdateBatchInfo(const std::wstring& sBatchID, const std::wstring& sBatchState);

/// `UpdateBatchInfo` with the reason of a failure.
Outcome updateBatchState(const std::wstring& sBatchID, const std::wstring& sBatchState);

/// Sets the remark of a batch, unless it has that remark already. True when the statement ran, also
/// when no row has that ID.
bool AddBatchRemark(const std::wstring& sBatchID, const std::wstring& sRemark);

/// The batches that wait now, for a report to the operator. Uses a connection of its own, so it may
/// be called while a statement waits. Nothing when the table is locked or cannot be read.
std::optional<WaitingBatches> waitingBatches();

/// True when the database file certainly does not exist.
bool isDatabaseMissing();

/// During its life a requested stop ends a statement's wait for a lock of another program, and the
/// statement fails. One at a time.
class StopEndsLockWait {
 public:
  explicit StopEndsLockWait(std::function<bool()> isStopRequested);
  ~StopEndsLockWait();
  StopEndsLockWait(const StopEndsLockWait&) = delete;
  StopEndsLockWait& operator=(const StopEndsLockWait&) = delete;
};

/// Replaces the factory of SQLite stores and drops the connection, so that a test can force
/// failures that it cannot make for real. An empty factory restores SQLite.
void setBatchStoreFactory(BatchStoreFactory factory);

}  // namespace mdlDataBase
}  // namespace orvane
