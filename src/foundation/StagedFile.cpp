#include "foundation/StagedFile.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/OutputFile.h"
#include "foundation/durable_file.h"
#include "foundation/paths.h"

namespace orvane {

// The folder.

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "orvane-";

fs::path parentFolder() {
  const char* const chosen = std::getenv("TMPDIR");
  return chosen == nullptr || *chosen == '\0' ? "/var/tmp" : chosen;
}

// Opens a folder of this user with a lock, which ends with the process. Empty if another process
// has it.
std::optional<FileDescriptor> locked(const fs::path& folder) {
  auto opened = FileDescriptor::tryToOpen(pathText(folder), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
  if (!opened || opened->status().st_uid != geteuid()) return std::nullopt;
  if (flock(opened->number(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  return opened;
}

void removeLeftovers() {
  std::error_code error, ignored;
  fs::directory_iterator entry(parentFolder(), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (!entry->path().filename().native().starts_with(kPrefix)) continue;
    if (locked(entry->path())) fs::remove_all(entry->path(), ignored);
  }
}

fs::path newFolder() {
  removeLeftovers();
  std::string name = parentFolder() / (std::string(kPrefix) + "XXXXXX");
  if (mkdtemp(name.data()) == nullptr) throw systemFailure(errno, pathText(parentFolder()));
  return name;
}

}  // namespace

// If the folder cannot be locked, no other process can lock and remove it.
TemporaryFolder::TemporaryFolder() : native_(newFolder()), lock_(locked(native_)) {}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(native_, ignored);
}

std::wstring TemporaryFolder::path() const {
  return pathText(native_);
}

// The file.

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
