#include "export/StagedFile.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <unistd.h>
#include <utility>

#include "export/sync_beside_window.h"
#include "foundation/FileDescriptor.h"
#include "foundation/OutputFile.h"

namespace orvane {
namespace {

void copyFile(const std::wstring& source, OutputFile target) {
  const OutputFile file = OutputFile::openToRead(source);
  target.copy(file, 0, file.size(), 0);
  target.close();
}

}  // namespace

bool StagedFile::isNeededFor(const std::wstring& target) {
  const auto file = FileDescriptor::tryToOpen(target, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
  char byte = 0;
  if (file && pread(file->number(), &byte, 1, 0) >= 0) return false;
  // gvfs returns the first of these errors from open; rclone the second, also from pread.
  return errno == EOPNOTSUPP || errno == EPERM || errno == EINVAL || errno == ENOSYS;
}

StagedFile::StagedFile(const std::wstring& target)
    : target_(target), path_(folder_.path() + L"\\document") {
  copyFile(target, OutputFile::createExclusively(path_));
}

void StagedFile::copyToTarget() const {
  syncBesideWindow([this] { copyFile(path_, OutputFile::createAnew(target_)); });
}

}  // namespace orvane
