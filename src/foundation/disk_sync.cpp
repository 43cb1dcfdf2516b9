#include "foundation/disk_sync.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <future>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

constexpr auto kStep = std::chrono::milliseconds(20);

void syncNow(const std::wstring& folder) {
  const int number = open(nativePath(folder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (number < 0 && errno == ENOENT) return;
  if (number < 0 && errno == EACCES) {  // it may be written to and not be read
    sync();
    return;
  }
  if (number < 0) throw systemFailure(errno, folder);
  const int error = syncfs(number) == 0 ? 0 : errno;
  close(number);
  if (error != 0) throw systemFailure(error, folder);
}

}  // namespace

void syncDiskOf(const std::wstring& folder) {
  std::future<void> done = std::async(std::launch::async, syncNow, folder);
  while (done.wait_for(kStep) != std::future_status::ready) windowServices().yield();
  done.get();
}

}  // namespace orvane
