#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "imaging/ImagingEngine.h"
#include "imaging/LoadedPage.h"
#include "imaging/encode_page.h"

namespace orvane {

/// The workers for this machine: one for each core, at most 8; none if there is one core.
unsigned workersOfMachine();

/// Loads and encodes the next pages of a run on threads of its own, and gives each to the run when
/// its turn has come. Its public operations are called on one thread, that of the run.
///
/// Only what is beyond doubt is given out: a page that was loaded and encoded without a failure and
/// without damage, from a file that has not changed since. In every other case the run does the
/// page itself, so that each failure arises where it always did. The workers write no file and no
/// log, and call nothing of the window.
class PagesAhead {
 public:
  /// A page with its encoding.
  struct Page {
    LoadedPage loaded;
    SaveSettings settings;
    EncodedPage encoded;  ///< in little-endian order
  };

  explicit PagesAhead(unsigned workers) : workers_(workers) {}
  /// Waits for the workers, each of which finishes its page first.
  ~PagesAhead();
  PagesAhead(const PagesAhead&) = delete;
  PagesAhead& operator=(const PagesAhead&) = delete;

  /// Begins to work on the pages of `forecast`, which is called on this thread only. The codes of
  /// each page are laid over `settings`. Starts the threads; those that cannot be had are done
  /// without.
  void begin(PageForecast forecast, const SaveSettings& settings);

  /// Drops all pages. A worker that is busy drops its page later, by itself.
  void end();

  /// The first page of the file `path`, and everything before it in the forecast is dropped. Waits
  /// for a page that is being encoded, yielding to the window meanwhile; calls `beforeWaiting`,
  /// which can be empty, first. Nothing for a page that is not expected, has not been begun, or may
  /// not be used.
  std::optional<Page> take(const std::wstring& path, const SaveSettings& settings,
                           const std::function<void()>& beforeWaiting);

 private:
  struct Job;

  void fill(const SaveSettings& settings);
  void startThreads();
  std::shared_ptr<Job> advanceTo(const std::wstring& path);
  void drop(Job& job);
  void work();
  std::shared_ptr<Job> nextJob();
  void finish(Job& job, std::optional<Page> page);
  std::optional<Page> prepare(Job& job) noexcept;
  bool reserve(Job& job, std::uint64_t bytes);
  bool isNext(const Job& job) const;

  const unsigned workers_;
  PageForecast forecast_;
  std::mutex mutex_;                       ///< guards what follows, apart from the list of threads
  std::condition_variable forRun_;         ///< a page is done
  std::condition_variable forWorkers_;     ///< a job is queued or dropped, or there is more room
  std::deque<std::shared_ptr<Job>> jobs_;  ///< in the order of the export
  std::uint64_t reserved_ = 0;             ///< bytes of all jobs
  bool ends_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace orvane
