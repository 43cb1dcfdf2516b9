#include "foundation/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "foundation/existing_path.h"
#include "foundation/path_text.h"
#include "foundation/utf8_text.h"

namespace orvane {
namespace {

// O_NONBLOCK lets the open of a named pipe return, so that it can be refused.
constexpr int kOpenAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr std::size_t kCopyPiece = 1 << 20;

void removeName(const std::filesystem::path& native, const std::wstring& path) {
  if (unlink(native.c_str()) != 0 && errno != ENOENT) throw systemFailure(errno, path);
}

std::vector<iovec> gather(std::span<const ByteView> parts) {
  std::vector<iovec> pieces;
  pieces.reserve(parts.size());
  for (const ByteView part : parts) {
    if (!part.empty()) pieces.push_back({const_cast<std::uint8_t*>(part.data()), part.size()});
  }
  return pieces;
}

// Takes `written` bytes off the front of the pieces and answers what is left.
std::span<iovec> dropFront(std::span<iovec> pieces, std::size_t written) {
  while (!pieces.empty() && written >= pieces.front().iov_len) {
    written -= pieces.front().iov_len;
    pieces = pieces.subspan(1);
  }
  if (!pieces.empty()) {
    pieces.front().iov_base = static_cast<std::uint8_t*>(pieces.front().iov_base) + written;
    pieces.front().iov_len -= written;
  }
  return pieces;
}

}  // namespace

Failure fileFailure(std::wstring_view path, std::string_view reason) {
  return Failure(toUtf8(path) + ": " + std::string(reason));
}

OutputFile OutputFile::createAnew(const std::wstring& path) {
  removeName(nativePath(path), path);
  return createExclusively(path);
}

OutputFile OutputFile::createExclusively(const std::wstring& path) {
  return {path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, true};
}

std::optional<OutputFile> OutputFile::openToAppend(const std::wstring& path) {
  struct stat status {};
  if (lstat(nativePath(path).c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw systemFailure(errno, path);
  }
  if (S_ISDIR(status.st_mode)) throw systemFailure(EISDIR, path);
  OutputFile file(path, O_RDWR | O_NOFOLLOW, false);
  file.requireOneHardLink();
  return file;
}

OutputFile OutputFile::openToReplace(const std::wstring& path) {
  OutputFile file(existingPath(path), O_RDONLY, false);
  file.requireOneHardLink();
  return file;
}

OutputFile OutputFile::openToRead(const std::wstring& path) {
  return {existingPath(path), O_RDONLY, false};
}

OutputFile::OutputFile(std::wstring path, int flags, bool created)
    : path_(std::move(path)), native_(nativePath(path_)) {
  descriptor_ = open(native_.c_str(), flags | kOpenAlways, 0666);
  if (descriptor_ < 0) {
    if (errno == ELOOP && (flags & O_NOFOLLOW) != 0) {
      throw fileFailure(path_, "the name is a symbolic link");
    }
    throw systemFailure(errno, path_);
  }
  removeAtEnd_ = created;
  try {
    requireRegularFile();
  } catch (...) {
    ::close(descriptor_);
    throw;
  }
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : path_(std::move(other.path_)),
      native_(std::move(other.native_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      removeAtEnd_(std::exchange(other.removeAtEnd_, false)) {}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (removeAtEnd_) unlink(native_.c_str());
}

void OutputFile::requireRegularFile() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) throw systemFailure(errno, path_);
  if (S_ISDIR(status.st_mode)) throw systemFailure(EISDIR, path_);
  if (!S_ISREG(status.st_mode)) throw fileFailure(path_, "not a regular file");
}

void OutputFile::requireOneHardLink() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) throw systemFailure(errno, path_);
  if (status.st_nlink > 1) throw fileFailure(path_, "the file has a second hard link");
}

FileStamp OutputFile::stamp() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) throw systemFailure(errno, path_);
  constexpr std::int64_t kNsPerSecond = 1'000'000'000;
  return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
          status.st_mtim.tv_sec * kNsPerSecond + status.st_mtim.tv_nsec};
}

void OutputFile::write(std::uint64_t offset, std::span<const ByteView> parts) {
  std::vector<iovec> pieces = gather(parts);
  for (std::span<iovec> left = pieces; !left.empty();) {
    const int count = static_cast<int>(std::min<std::size_t>(left.size(), IOV_MAX));
    const ssize_t written = pwritev(descriptor_, left.data(), count, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw systemFailure(errno, path_);
    if (written == 0) throw systemFailure(ENOSPC, path_);
    offset += static_cast<std::uint64_t>(written);
    left = dropFront(left, static_cast<std::size_t>(written));
  }
}

void OutputFile::read(std::uint64_t offset, std::span<std::uint8_t> into) const {
  while (!into.empty()) {
    const ssize_t got = pread(descriptor_, into.data(), into.size(), static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw systemFailure(errno, path_);
    if (got == 0) throw fileFailure(path_, "the file ends too early");
    offset += static_cast<std::uint64_t>(got);
    into = into.subspan(static_cast<std::size_t>(got));
  }
}

void OutputFile::copy(const OutputFile& source, std::uint64_t from, std::uint64_t length,
                      std::uint64_t offset) {
  Bytes buffer(static_cast<std::size_t>(std::min<std::uint64_t>(length, kCopyPiece)));
  for (std::uint64_t done = 0; done < length;) {
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(length - done, kCopyPiece));
    const std::span<std::uint8_t> piece(buffer.data(), size);
    source.read(from + done, piece);
    write(offset + done, ByteView(piece));
    done += piece.size();
  }
}

void OutputFile::cutBack(std::uint64_t size) noexcept {
  while (ftruncate(descriptor_, static_cast<off_t>(size)) != 0 && errno == EINTR) {
  }
}

// A close can be the first to tell of a lost write. It is asked of a second descriptor, so that the
// caller still has the file in hand to undo its work.
void OutputFile::close() {
  const int second = dup(descriptor_);
  if (second < 0 || ::close(second) != 0) throw systemFailure(errno, path_);
  ::close(std::exchange(descriptor_, -1));
  removeAtEnd_ = false;
}

}  // namespace orvane
