#include "foundation/share_out.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace orvane {
namespace {

// The threads, and what they share.
class Workers {
 public:
  using Work = std::function<void(std::size_t item)>;

  Workers(std::size_t items, std::size_t threads, const Work& work) : items_(items), work_(work) {
    while (threads_.size() < threads && startThread()) {
    }
  }

  void wait(const std::function<void()>& observe) {
    constexpr auto kStep = std::chrono::milliseconds(100);
    std::unique_lock lock(mutex_);
    while (!ended_.wait_for(lock, kStep, [this] { return running_ == 0; })) {
      lock.unlock();
      try {
        observe();
      } catch (...) {
        stop(std::current_exception());
      }
      lock.lock();
    }
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  // Returns false if the system has no more threads.
  bool startThread() {
    const std::lock_guard lock(mutex_);
    try {
      threads_.emplace_back([this] { takeItems(); });
      ++running_;
      return true;
    } catch (const std::system_error&) {
      if (threads_.empty()) throw;
      return false;
    }
  }

  void takeItems() {
    try {
      for (std::size_t item = next_++; item < items_ && !isStopped_; item = next_++) work_(item);
    } catch (...) {
      stop(std::current_exception());
    }
    const std::lock_guard lock(mutex_);
    --running_;
    ended_.notify_all();
  }

  void stop(std::exception_ptr failure) {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::move(failure);
    isStopped_ = true;
  }

  const std::size_t items_;
  const Work& work_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> isStopped_ = false;
  std::mutex mutex_;  // of the next three
  std::condition_variable ended_;
  std::exception_ptr failure_;
  std::size_t running_ = 0;
  std::vector<std::jthread> threads_;  // last, so that they end first
};

}  // namespace

void shareOut(std::size_t items, unsigned threads, const std::function<void(std::size_t)>& work,
              const std::function<void()>& observe) {
  Workers(items, std::min<std::size_t>(std::max(threads, 1U), items), work).wait(observe);
}

}  // namespace orvane
