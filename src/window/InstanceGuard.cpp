#include "window/InstanceGuard.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

#include "foundation/Failure.h"

namespace orvane {

InstanceGuard::InstanceGuard(const std::wstring& folder) {
  try {
    folder_.emplace(folder, O_RDONLY | O_DIRECTORY);
  } catch (const Failure&) {
    return;
  }
  anotherRuns_ = flock(folder_->number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

}  // namespace orvane
