#include "foundation/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/letter_case.h"
#include "foundation/paths.h"

namespace orvane {

namespace {

int openedFile(const std::wstring& path, int flags, mode_t mode) {
  return open(nativePath(path).c_str(), flags | O_CLOEXEC, mode);
}

}  // namespace

FileDescriptor::FileDescriptor(const std::wstring& path, int flags, mode_t mode)
    : number_(openedFile(path, flags, mode)), path_(path) {
  if (number_ >= 0) return;
  if (errno == ELOOP && (flags & O_NOFOLLOW) != 0) {
    throw fileFailure(path, "the name is a symbolic link");
  }
  throw systemFailure(errno, path);
}

std::optional<FileDescriptor> FileDescriptor::tryToOpen(const std::wstring& path, int flags) {
  const int number = openedFile(path, flags, 0666);
  if (number < 0) return std::nullopt;
  return FileDescriptor(number, path);
}

FileDescriptor FileDescriptor::openInAnyCase(const std::wstring& path, int flags) {
  std::optional<FileDescriptor> file = tryToOpen(path, flags);
  if (file) return *std::move(file);
  if (errno != ENOENT) throw systemFailure(errno, path);
  return {existingPath(path), flags};
}

FileDescriptor::~FileDescriptor() {
  if (number_ >= 0) ::close(number_);
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : number_(std::exchange(other.number_, -1)), path_(std::move(other.path_)) {}

// The file that was open until now is closed with `other`.
FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  std::swap(number_, other.number_);
  path_.swap(other.path_);
  return *this;
}

FileDescriptor FileDescriptor::openRegularFile(const std::wstring& path) {
  // Without O_NONBLOCK, opening a pipe would wait for a writer.
  FileDescriptor file = openInAnyCase(path, O_RDONLY | O_NONBLOCK);
  const mode_t mode = file.status().st_mode;
  if (S_ISDIR(mode)) throw systemFailure(EISDIR, path);
  if (!S_ISREG(mode)) throw systemFailure(EINVAL, path);
  return file;
}

struct stat FileDescriptor::status() const {
  struct stat status {};
  if (fstat(number_, &status) != 0) throw systemFailure(errno, path_);
  return status;
}

std::size_t FileDescriptor::read(char* buffer, std::size_t capacity) const {
  for (;;) {
    const ssize_t count = ::read(number_, buffer, capacity);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) throw systemFailure(errno, path_);
  }
}

std::size_t FileDescriptor::readAt(std::uint64_t offset, std::span<std::uint8_t> into) const {
  int error = 0;
  const std::size_t done = tryToReadAt(offset, into, error);
  if (error != 0) throw systemFailure(error, path_);
  return done;
}

std::size_t FileDescriptor::tryToReadAt(std::uint64_t offset, std::span<std::uint8_t> into,
                                        int& error) const noexcept {
  error = 0;
  std::size_t done = 0;
  while (done < into.size() && error == 0) {
    const ssize_t count =
        pread(number_, into.data() + done, into.size() - done, static_cast<off_t>(offset + done));
    if (count == 0) break;
    if (count > 0) done += static_cast<std::size_t>(count);
    if (count < 0 && errno != EINTR) error = errno;
  }
  return done;
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

// close() may be the first call that reports a failed write, so a duplicate is closed first.
void FileDescriptor::close() {
  const int second = dup(number_);
  if (second < 0 || (::close(second) != 0 && errno != EINTR)) throw systemFailure(errno, path_);
  ::close(std::exchange(number_, -1));
}

}  // namespace orvane
