#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "batchdb/BatchStore.h"
#include "batchdb/Recordset.h"

namespace orvane {

/// The program's one connection to `Orvane.dll`, the batch database beside the program. It comes
/// into being at first use and is never closed explicitly: it is replaced or dies with the process.
extern std::unique_ptr<BatchStore> gConnection;

/// The batches that wait for their export.
struct WaitingBatches {
  std::int64_t count = 0;
  std::optional<std::int64_t> pages;  ///< the sum of `PaperNum`; none unless each is 1 to 32767
};

/// The statements on the batch table. None throws: a failure is logged and gives false.
namespace mdlDataBase {

/// Makes sure that the connection is open and usable. An open one proves it by a round trip; one
/// that fails the proof is thrown away and rebuilt, once. Reports nothing itself. Callers pass
/// false.
bool EnsureConnection(bool bRetrying);

/// Opens the connection. A failure is logged and shown in a box.
bool OpenConnection();

/// Runs a query into `rs`, which is closed first when it is open. A failure is logged and shown in
/// a box.
bool OpenRecordset(Recordset& rs, const std::wstring& sSql, bool bReadOnly);

/// Sets the state of a batch. True when the statement ran, also when no row has that ID.
bool UpdateBatchInfo(const std::wstring& sBatchID, const std::wstring& sBatchState);

/// Sets the remark of a batch; one that it has already is not written again. True when the
/// statement ran, also when no row has that ID.
bool AddBatchRemark(const std::wstring& sBatchID, const std::wstring& sRemark);

/// What waits now, for a report to the operator. It has a connection of its own, so it may be asked
/// for while a statement waits. It waits for no lock and tells no failure: then there is none.
std::optional<WaitingBatches> waitingBatches();

/// True when the database file is certainly not there.
bool isDatabaseMissing();

/// While it lives, a stop that is asked for ends the wait of a statement for a lock of another
/// program, and the statement fails. One at a time.
class StopEndsLockWait {
 public:
  explicit StopEndsLockWait(std::function<bool()> isStopRequested);
  ~StopEndsLockWait();
  StopEndsLockWait(const StopEndsLockWait&) = delete;
  StopEndsLockWait& operator=(const StopEndsLockWait&) = delete;
};

/// Puts `factory` in place of the one that makes SQLite stores and drops the connection, so that a
/// test can force failures that it cannot make for real. An empty factory brings SQLite back.
void setBatchStoreFactory(BatchStoreFactory factory);

}  // namespace mdlDataBase
}  // namespace orvane
