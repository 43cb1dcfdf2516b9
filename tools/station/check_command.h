#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batchdb/BatchStore.h"

namespace orvane::station {

/// The options of `station check`.
struct CheckOptions {
  bool measures = false;  ///< --pixels
  bool asTable = false;   ///< --tsv
};

/// The options of a command line that is a check; nothing for any other one.
std::optional<CheckOptions> checkOptions(const std::vector<std::wstring>& words);

/// Checks the waiting batches and prints what was found. `waiting` has a row for each: BatchID,
/// BatchState, CreateDate, PaperNum, Remark. Returns the exit status: 1 if one of them cannot be
/// exported, otherwise 0.
int check(const std::vector<Row>& waiting, const CheckOptions& options);

}  // namespace orvane::station
