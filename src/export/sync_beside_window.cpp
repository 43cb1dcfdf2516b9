#include "export/sync_beside_window.h"

#include <chrono>
#include <future>
#include <system_error>
#include <vector>

#include "foundation/WindowServices.h"

namespace orvane {
namespace {

std::future<void> started(const std::function<void()>& sync) {
  try {
    return std::async(std::launch::async, sync);
  } catch (const std::system_error&) {  // no thread can be started
    return std::async(std::launch::deferred, sync);
  }
}

}  // namespace

void syncBesideWindow(const std::function<void()>& sync, const std::function<void()>& work) {
  constexpr auto kStep = std::chrono::milliseconds(20);
  std::vector<std::future<void>> tasks;
  tasks.push_back(started(sync));
  if (work) tasks.push_back(started(work));
  for (const std::future<void>& task : tasks) {
    while (task.wait_for(kStep) == std::future_status::timeout) windowServices().yield();
  }
  for (std::future<void>& task : tasks) task.get();
}

}  // namespace orvane
