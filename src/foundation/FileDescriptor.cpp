#include "foundation/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/existing_path.h"
#include "foundation/path_text.h"

namespace orvane {

FileDescriptor::FileDescriptor(const std::wstring& path, int flags, mode_t mode)
    : number_(open(nativePath(path).c_str(), flags | O_CLOEXEC, mode)), path_(path) {
  if (number_ < 0) throw systemFailure(errno, path);
}

FileDescriptor::~FileDescriptor() {
  if (number_ >= 0) ::close(number_);
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : number_(std::exchange(other.number_, -1)), path_(std::move(other.path_)) {}

FileDescriptor FileDescriptor::openRegularFile(const std::wstring& path) {
  // Without O_NONBLOCK the opening of a pipe would wait for a writer.
  FileDescriptor file(existingPath(path), O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (fstat(file.number_, &status) != 0) throw systemFailure(errno, path);
  if (S_ISDIR(status.st_mode)) throw systemFailure(EISDIR, path);
  if (!S_ISREG(status.st_mode)) throw systemFailure(EINVAL, path);
  return file;
}

std::size_t FileDescriptor::read(char* buffer, std::size_t capacity) const {
  for (;;) {
    const ssize_t count = ::read(number_, buffer, capacity);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) throw systemFailure(errno, path_);
  }
}

void FileDescriptor::writeAll(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = ::write(number_, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      throw systemFailure(errno, path_);
    }
  }
}

void FileDescriptor::sync() const {
  if (fsync(number_) != 0) throw systemFailure(errno, path_);
}

void FileDescriptor::close() {
  // Linux has closed the file also when it reports a failure; EINTR is none.
  if (::close(std::exchange(number_, -1)) != 0 && errno != EINTR) throw systemFailure(errno, path_);
}

}  // namespace orvane
