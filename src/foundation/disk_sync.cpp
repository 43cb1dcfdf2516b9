#include "foundation/disk_sync.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <future>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <system_error>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

constexpr auto kStep = std::chrono::milliseconds(20);

std::future<void> started(const std::function<void()>& sync) {
  try {
    return std::async(std::launch::async, sync);
  } catch (const std::system_error&) {  // no thread to be had
    return std::async(std::launch::deferred, sync);
  }
}

// Opens `path` for as long as `sync` takes, which answers 0 or -1 with errno. Answers the error,
// EACCES for what may be written to and not be read.
template <typename Sync>
int errorOf(Sync sync, const std::wstring& path) {
  const int number = open(nativePath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (number < 0) return errno;
  const int error = sync(number) == 0 ? 0 : errno;
  close(number);
  return error;
}

}  // namespace

void syncBesideWindow(const std::function<void()>& sync) {
  std::future<void> done = started(sync);
  while (done.wait_for(kStep) == std::future_status::timeout) windowServices().yield();
  done.get();
}

bool syncsFilesOnly(const std::wstring& path) {
  struct statfs status {};
  if (statfs(nativePath(path).c_str(), &status) != 0) throw systemFailure(errno, path);
  return status.f_type == FUSE_SUPER_MAGIC;
}

void syncDiskOf(const std::wstring& folder) {
  const int error = errorOf(syncfs, folder);
  if (error == EACCES) {
    sync();
  } else if (error != 0) {
    throw systemFailure(error, folder);
  }
}

void syncEntry(const std::wstring& path) {
  const int error = errorOf(fsync, path);
  if (error != 0 && error != EACCES && error != EINVAL && error != ENOTSUP) {
    throw systemFailure(error, path);
  }
}

}  // namespace orvane
