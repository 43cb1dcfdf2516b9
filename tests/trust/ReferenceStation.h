#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "export/ExportStation.h"
#include "settings/ExportSettings.h"

namespace orvane::test {

/// A small station whose batches are each exported in another form, with the result of an
/// undisturbed run. `data.ini` lacks one key, which the run adds.
class ReferenceStation : public ExportStation {
 public:
  static constexpr int kBatches = 5;

  ReferenceStation();

  /// Restores the state before the run.
  void reset() const;

  /// Runs the program without its window over the whole table; `workers` threads prepare pages.
  /// Returns 0 if nothing failed, 1 if a failure was reported, 2 if a failed batch left an
  /// incomplete file.
  int work(unsigned workers = 0) const;

  /// Describes what is wrong after a disturbed run; empty if nothing is. After a kill, files of the
  /// current batch may be incomplete.
  std::string defects(bool wasKilled) const;

  /// The batches in the state 完成成果输出.
  std::set<std::string> exportedBatches() const;

  /// Returns true if the station is in the state that an undisturbed run leaves.
  bool isFinished() const;

 private:
  ExportSettings formOf(int batch) const;
  bool outputsAreComplete() const;

  std::string database_, settings_, finishedSettings_;
  std::map<std::string, std::string> scans_, outputs_;
};

/// Runs `work` in a child process. Returns its result, or 128 + signal.
int inChild(const std::function<int()>& work);

}  // namespace orvane::test
