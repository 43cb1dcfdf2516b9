#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "batchdb/mdlDataBase.h"

namespace orvane {

/// How a run ended: no batch was waiting any more, the operator stopped it, or an error did.
enum class RunEnd { Done, Stopped, Failed };

/// The progress of a run. The run updates it, and the window reads it when the operator asks.
/// Nothing here draws, waits or queries the table.
class RunProgress {
 public:
  using Clock = std::chrono::steady_clock;

  explicit RunProgress(std::function<Clock::time_point()> now = Clock::now);

  void beginRun();
  /// @param PaperNum  the number of pages of the batch according to the table.
  void beginBatch(const std::wstring& BatchID, int PaperNum);
  void beginDocument(const std::wstring& DocumentID);
  void beginPage(int page, int pageCount);
  void endPage();
  /// All files of the batch are written, and the run waits for the disk.
  void beginSync();
  /// Called for an exported batch that replaced files of this run or has older files beside its
  /// own, before `endBatch`.
  void noteFinding();
  void endBatch(bool isExported);
  void endRun(RunEnd end);

  bool isRunning() const { return isRunning_; }
  /// The number of finished attempts at a batch. Each may have changed what waits in the table.
  std::int64_t attempts() const { return attempts_; }

  /// The progress for the operator, in a few lines that each have a line end: the current batch,
  /// document and page; the batches done and waiting; the time used; and the remaining time as soon
  /// as it can be estimated. Empty if no run is in progress.
  /// @param waiting  the waiting batches of the table, including the current one; if known.
  /// @param isStopRequested  true: only the rest of the current batch counts as remaining.
  std::wstring text(const std::optional<WaitingBatches>& waiting, bool isStopRequested) const;

  /// How the last run ended: when and why, what was exported, and the time used; in lines that each
  /// have a line end. Empty during a run and before the first one has ended.
  std::wstring summary() const;

 private:
  /// How many pages were done at a time.
  struct Sample {
    Clock::time_point time;
    std::int64_t pages;
  };

  std::wstring currentStep(bool isStopRequested) const;
  std::wstring batchCounts(const std::optional<WaitingBatches>& waiting) const;
  std::wstring times(const std::optional<WaitingBatches>& waiting, bool isStopRequested) const;
  /// An estimate of the pages that remain; empty if it cannot be made.
  std::optional<double> pagesLeft(const std::optional<WaitingBatches>& waiting,
                                  bool isStopRequested) const;
  /// Where the time begins that the speed is taken from: the last minute, or more if it has too few
  /// pages. An index of `samples_`.
  std::size_t beginOfRecentTime(Clock::time_point now) const;

  std::function<Clock::time_point()> now_;
  bool isRunning_ = false;
  Clock::time_point start_{};
  std::deque<Sample> samples_;  // one a second at most, the first at the start

  std::optional<RunEnd> end_;
  Clock::duration timeUsed_{};
  std::wstring timeOfEnd_;

  std::optional<std::wstring> batch_;  // the current one
  int PaperNum_ = 0;
  std::int64_t documentsOfBatch_ = 0, pagesOfBatch_ = 0;  // exported in this attempt
  std::wstring document_;
  int page_ = 0, pageCount_ = 0;
  bool isSyncing_ = false;

  std::wstring lastFailed_;
  int failuresInARow_ = 0;  // of `lastFailed_`

  std::int64_t attempts_ = 0, exportedBatches_ = 0, pagesDone_ = 0;
  std::int64_t exportedDocuments_ = 0, exportedPages_ = 0, exportedPaperNum_ = 0;
  std::int64_t findings_ = 0;  // exported batches with a finding
};

}  // namespace orvane
