#include "foundation/InstanceGuard.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/log.h"
#include "foundation/program.h"

namespace orvane {

InstanceGuard::InstanceGuard(const std::wstring& folder) {
  const std::wstring file = folder + L"\\Orvane.lock";
  // The last attempt is for a lock file of another user.
  const std::pair<const std::wstring&, int> attempts[] = {
      {folder, O_RDONLY | O_DIRECTORY}, {file, O_RDWR | O_CREAT}, {file, O_RDONLY}};
  std::wstring reasons;
  for (const auto& [path, flags] : attempts) {
    try {
      lock(path, flags);
      return;
    } catch (const Failure& failure) {
      reasons += (reasons.empty() ? L"" : L"；") + description(failure);
    }
  }
  writeLogEntry(L"工作站无法加锁，不能确定是否已有另一个程序在这里运行：" + reasons,
                kApplicationTitle);
}

void InstanceGuard::lock(const std::wstring& path, int flags) {
  FileDescriptor opened(path, flags);
  const bool isMine = flock(opened.number(), LOCK_EX | LOCK_NB) == 0;
  if (!isMine && errno != EWOULDBLOCK) throw systemFailure(errno, path);
  anotherRuns_ = !isMine;
  locked_.emplace(std::move(opened));
}

}  // namespace orvane
