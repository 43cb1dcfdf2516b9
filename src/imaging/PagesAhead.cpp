#include "imaging/PagesAhead.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <sys/stat.h>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/WindowServices.h"
#include "imaging/mdlImageProcess.h"

namespace orvane {
namespace {

constexpr unsigned kMostWorkers = 8;
constexpr std::uint64_t kMegabyte = 1 << 20;
constexpr auto kTimeBetweenYields = std::chrono::milliseconds(40);

// Throws Failure for a file that cannot be opened.
FileState stateOfFile(const std::wstring& path) {
  return FileDescriptor::openRegularFile(path).state();
}

// Some file systems count in steps of two seconds, and a file that is written within the step in
// which it was read keeps its time.
bool isTooYoung(const FileState& file) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return file.modified.isAfter({now.tv_sec - 2, now.tv_nsec});
}

std::uint64_t heldBytes(const PagesAhead::Page& page) {
  const EncodedImage& image = page.encoded.image;
  std::uint64_t bytes = page.loaded.heldBytes() + image.iccProfile.size();
  for (const Bytes& strip : image.strips) bytes += strip.size();
  return bytes;
}

/// A page of a depth, and settings over which its codes are laid.
class PageSettings final : public PageToSave {
 public:
  PageSettings(std::uint16_t bitsPerPixel, const SaveSettings& settings)
      : bitsPerPixel_(static_cast<std::int16_t>(bitsPerPixel)), settings_(settings) {}

  const SaveSettings& settings() const { return settings_; }

  std::int16_t BitsPerPixel() const override { return bitsPerPixel_; }
  void OutputType(std::int32_t type) override { settings_.outputType = type; }
  void TiffCompression(std::int32_t code) override { settings_.tiffCompression = code; }
  void PdfCompression(std::int32_t code) override { settings_.pdfCompression = code; }
  void JpegFactorMajor(std::int16_t factor) override { settings_.jpegFactors.major = factor; }
  void JpegFactorMinor(std::int16_t factor) override { settings_.jpegFactors.minor = factor; }

 private:
  std::int16_t bitsPerPixel_;
  SaveSettings settings_;
};

/// Blocks all signals while it lives. A thread that is started meanwhile never gets one, so that
/// signals interrupt the same calls as without workers.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &old_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t old_{};
};

}  // namespace

unsigned workersOfMachine() {
  const unsigned cores = std::thread::hardware_concurrency();
  return cores <= 1 ? 0 : std::min(cores, kMostWorkers);
}

/// A page to come. All but `state` and `reserved` belongs to its worker until it is Ready.
struct PagesAhead::Job {
  enum class State {
    Queued,
    Begun,  ///< its worker opens the file, or waits for room
    Encoding,
    Ready,
    Dropped,
  };

  Job(const ExpectedPage& expected, const SaveSettings& instance)
      : path(expected.path), choice(expected.choice), settings(instance) {}

  std::wstring path;
  SaveChoice choice;
  SaveSettings settings;
  FileState file{};
  std::optional<Page> page;
  State state = State::Queued;
  std::uint64_t reserved = 0;
};

PagesAhead::~PagesAhead() {
  end();
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  forWorkers_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void PagesAhead::begin(PageForecast forecast, const SaveSettings& settings) {
  end();
  if (workers_ == 0) return;
  forecast_ = std::move(forecast);
  fill(settings);
  if (jobs_.size() > 1 && threads_.empty()) startThreads();
}

void PagesAhead::end() {
  forecast_ = nullptr;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& job : jobs_) drop(*job);
    jobs_.clear();
  }
  forWorkers_.notify_all();
}

// A failure of the forecast is ignored: whoever loads the page gets it too.
void PagesAhead::fill(const SaveSettings& settings) {
  try {
    while (forecast_ && jobs_.size() < 2 * workers_ + 2) {
      std::optional<ExpectedPage> page = forecast_();
      if (!page) break;
      auto job = std::make_shared<Job>(*page, settings);
      const std::lock_guard lock(mutex_);
      jobs_.push_back(std::move(job));
    }
    if (jobs_.size() == 2 * workers_ + 2) return forWorkers_.notify_all();
  } catch (const std::exception&) {
  }
  forecast_ = nullptr;
  forWorkers_.notify_all();
}

void PagesAhead::startThreads() {
  const SignalsBlocked blocked;
  try {
    threads_.reserve(workers_);
    while (threads_.size() < workers_) threads_.emplace_back([this] { work(); });
  } catch (const std::exception&) {  // no more threads, or no memory
  }
}

std::shared_ptr<PagesAhead::Job> PagesAhead::advanceTo(const std::wstring& path) {
  const std::lock_guard lock(mutex_);
  const auto found =
      std::find_if(jobs_.begin(), jobs_.end(), [&](const auto& job) { return job->path == path; });
  if (found == jobs_.end()) return nullptr;
  std::shared_ptr<Job> job = *found;
  for (auto passed = jobs_.begin(); passed != found; ++passed) drop(**passed);
  jobs_.erase(jobs_.begin(), found + 1);
  return job;
}

// With the lock. A worker gives back what it has reserved for a dropped job.
void PagesAhead::drop(Job& job) {
  if (job.state == Job::State::Ready) {
    reserved_ -= std::exchange(job.reserved, 0);
    job.page.reset();
  }
  job.state = Job::State::Dropped;
}

std::optional<PagesAhead::Page> PagesAhead::take(const std::wstring& path,
                                                 const SaveSettings& settings,
                                                 const std::function<void()>& beforeWaiting) {
  const std::shared_ptr<Job> job = advanceTo(path);
  if (!job) return std::nullopt;
  fill(settings);

  std::unique_lock lock(mutex_);
  const auto isDone = [&] {
    return job->state != Job::State::Begun && job->state != Job::State::Encoding;
  };
  if (beforeWaiting && !isDone()) {
    lock.unlock();
    beforeWaiting();
    lock.lock();
  }
  while (!forRun_.wait_for(lock, kTimeBetweenYields, isDone)) {
    lock.unlock();
    windowServices().yield();
    lock.lock();
  }
  std::optional<Page> page = std::move(job->page);
  drop(*job);
  lock.unlock();
  forWorkers_.notify_all();
  try {
    if (page && stateOfFile(path) == job->file) return page;
  } catch (const std::exception&) {  // it cannot be opened any more
  }
  return std::nullopt;
}

void PagesAhead::work() {
  while (const std::shared_ptr<Job> job = nextJob()) finish(*job, prepare(*job));
}

// Null at the end of the thread.
std::shared_ptr<PagesAhead::Job> PagesAhead::nextJob() {
  std::unique_lock lock(mutex_);
  for (; !ends_; forWorkers_.wait(lock)) {
    const auto next = std::find_if(jobs_.begin(), jobs_.end(), [](const auto& job) {
      return job->state == Job::State::Queued;
    });
    if (next == jobs_.end()) continue;
    (*next)->state = Job::State::Begun;
    return *next;
  }
  return nullptr;
}

void PagesAhead::finish(Job& job, std::optional<Page> page) {
  {
    const std::lock_guard lock(mutex_);
    reserved_ -= std::exchange(job.reserved, 0);
    if (page && job.state == Job::State::Encoding) {
      job.reserved = heldBytes(*page);
      reserved_ += job.reserved;
      job.page = std::move(page);
      job.state = Job::State::Ready;
    } else {
      job.state = Job::State::Dropped;
    }
  }
  forRun_.notify_one();
  forWorkers_.notify_all();
}

// Nothing that is thrown leaves the thread: whatever it was, the run will meet it itself.
std::optional<PagesAhead::Page> PagesAhead::prepare(Job& job) noexcept {
  try {
    job.file = stateOfFile(job.path);
    if (isTooYoung(job.file)) return std::nullopt;
    LoadedPage loaded(job.path, 1);
    if (!reserve(job, loaded.bytesToEncode())) return std::nullopt;
    PageSettings page(loaded.bitsPerPixel(), job.settings);
    setCodes(page, job.choice);
    EncodedPage encoded = encodePage(loaded, page.settings(), SampleOrder::LittleEndian, [] {});
    if (encoded.data.damage) return std::nullopt;
    return Page{std::move(loaded), page.settings(), std::move(encoded)};
  } catch (...) {
    return std::nullopt;
  }
}

// Waits until there is room for the bytes, page by page in the order of the export: so whatever has
// room is needed before the pages that wait. False for a page that is too large or was dropped.
bool PagesAhead::reserve(Job& job, std::uint64_t bytes) {
  const std::uint64_t most = std::min<std::uint64_t>(80 + 28 * workers_, 256) * kMegabyte;
  if (bytes > most) return false;
  std::unique_lock lock(mutex_);
  forWorkers_.wait(lock, [&] {
    return job.state == Job::State::Dropped || (reserved_ + bytes <= most && isNext(job));
  });
  if (job.state == Job::State::Dropped) return false;
  job.reserved = bytes;
  reserved_ += bytes;
  job.state = Job::State::Encoding;
  forWorkers_.notify_all();
  return true;
}

// True unless an earlier page waits for room, or will. A page that the run has asked for is the
// first of all.
bool PagesAhead::isNext(const Job& job) const {
  const auto at = std::find_if(jobs_.begin(), jobs_.end(),
                               [&](const auto& other) { return other.get() == &job; });
  return at == jobs_.end() || std::none_of(jobs_.begin(), at, [](const auto& other) {
           return other->state == Job::State::Queued || other->state == Job::State::Begun;
         });
}

}  // namespace orvane
