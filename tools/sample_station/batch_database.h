#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvane::sample {

// A row of T_BatchInfo. All texts are UTF-8.
struct BatchRow {
  std::string batchId;
  std::string batchState;
  std::string createDate;  // a text that sorts by time, for example "2024-03-01 08:30:00"
  int paperNum = 0;
  std::string scanUser;
  std::string scanStation;
};

// Creates the SQLite file `file` with the table T_BatchInfo and these rows. An existing file is
// replaced.
void createBatchDatabase(const std::filesystem::path& file, const std::vector<BatchRow>& rows);

}  // namespace orvane::sample
