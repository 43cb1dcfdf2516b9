#pragma once

#include <functional>
#include <map>
#include <string>

#include "export/ExportStation.h"
#include "settings/ExportSettings.h"

namespace orvane::test {

/// A small station whose batches go out in one form each, and what an undisturbed run makes of it.
/// `data.ini` lacks one key, which the run adds.
class ReferenceStation : public ExportStation {
 public:
  static constexpr int kBatches = 5;

  ReferenceStation();

  /// Back to the state in front of the run.
  void reset() const;

  /// One start of the program without its window, through the whole table: 0 when nothing failed, 1
  /// when a failure was told, 2 when a failed batch left a broken file.
  int work() const;

  /// What is wrong after a disturbed run; empty when nothing is. After a kill the batch that was
  /// under way may be there in part.
  std::string wrongs(bool wasKilled) const;

  /// True when everything is as an undisturbed run leaves it.
  bool isFinished() const;

 private:
  ExportSettings formOf(int batch) const;
  bool outputsAreWhole() const;

  std::string database_, settings_, finishedSettings_;
  std::map<std::string, std::string> scans_, outputs_;
};

/// Runs `work` in a process of its own; its answer, or 128 + signal.
int inChild(const std::function<int()>& work);

}  // namespace orvane::test
