#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batchdb/BatchStore.h"

namespace orvane::station {

/// The words after `station add`.
struct AddRequest {
  std::wstring folder;  ///< as typed
  std::wstring name;    ///< of the batch; empty: that of the folder
  std::wstring date;    ///< for `CreateDate`; empty: now
  bool isDryRun = false;
};

/// The request in the words of a command line: "add", options and a folder. Nothing if they are
/// another command or make no sense.
std::optional<AddRequest> addRequest(const std::vector<std::wstring>& words);

/// Makes a waiting batch of a folder of scans, or registers a batch folder below `Batchs` where it
/// is. Prints the plan or the result. Returns the exit status: 0, or 1 if it is refused. Throws
/// Failure with the reason if it fails, and then nothing remains.
int add(BatchStore& store, const AddRequest& request);

}  // namespace orvane::station
