#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "batchdb/mdlDataBase.h"

namespace orvane {

/// Where a run stands: the run tells it as it goes on, and the window asks it when the operator
/// does. Nothing here draws, waits or asks the table.
class RunProgress {
 public:
  using Clock = std::chrono::steady_clock;

  explicit RunProgress(std::function<Clock::time_point()> now = Clock::now);

  void beginRun();
  /// @param PaperNum  the number of pages that the table names for the batch.
  void beginBatch(const std::wstring& BatchID, int PaperNum);
  void beginDocument(const std::wstring& DocumentID);
  void beginPage(int page, int pageCount);
  void endPage();
  /// All files of the batch are written; the run waits for the disk.
  void beginSync();
  void endBatch(bool isExported);
  void endRun();

  bool isRunning() const { return isRunning_; }
  /// The attempts at a batch that are over. What waits in the table has changed with each.
  std::int64_t attempts() const { return attempts_; }

  /// The progress in a few lines for the operator, each with a line end: what is under way, the
  /// batches done and waiting, the time used, and the time that the rest should take as soon as it
  /// can be told. Empty while nothing runs.
  /// @param waiting  as the table tells it, with the batch under way in it; if it is known.
  /// @param isStopRequested  a stop was asked for: what is left is the batch under way.
  std::wstring text(const std::optional<WaitingBatches>& waiting, bool isStopRequested) const;

 private:
  std::wstring underWay(bool isStopRequested) const;
  std::wstring batchCounts(const std::optional<WaitingBatches>& waiting) const;
  std::wstring times(const std::optional<WaitingBatches>& waiting, bool isStopRequested) const;
  /// The pages that are still to be exported; none when the table does not tell.
  std::optional<double> pagesLeft(const std::optional<WaitingBatches>& waiting,
                                  bool isStopRequested) const;

  std::function<Clock::time_point()> now_;
  bool isRunning_ = false;
  Clock::time_point start_{};

  std::optional<std::wstring> batch_;  // the one under way
  int PaperNum_ = 0;
  std::int64_t pagesOfBatch_ = 0;  // exported in this attempt
  std::wstring document_;
  int page_ = 0, pageCount_ = 0;
  bool isSyncing_ = false;

  std::wstring lastFailed_;
  int failuresInARow_ = 0;  // of that batch

  std::int64_t attempts_ = 0, exportedBatches_ = 0, pagesDone_ = 0;
  std::int64_t exportedPages_ = 0, exportedPaperNum_ = 0;  // of the exported batches
};

}  // namespace orvane
