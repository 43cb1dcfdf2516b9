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

#include "foundation/paths.h"

namespace orvane {
namespace {

// With O_NONBLOCK, opening a named pipe returns, so that it can be refused.
constexpr int kOpenAlways = O_NOCTTY | O_NONBLOCK;
constexpr std::size_t kCopyPiece = 1 << 20;

std::vector<iovec> gather(std::span<const ByteView> parts) {
  std::vector<iovec> pieces;
  pieces.reserve(parts.size());
  for (const ByteView part : parts) {
    if (!part.empty()) pieces.push_back({const_cast<std::uint8_t*>(part.data()), part.size()});
  }
  return pieces;
}

// The pieces without their first `written` bytes.
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

OutputFile OutputFile::createAnew(const std::wstring& path) {
  if (unlink(nativePath(path).c_str()) != 0 && errno != ENOENT) throw systemFailure(errno, path);
  return createExclusively(path);
}

OutputFile OutputFile::createExclusively(const std::wstring& path) {
  return {{path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | kOpenAlways}, true};
}

std::optional<OutputFile> OutputFile::openToAppend(const std::wstring& path) {
  struct stat status {};
  if (lstat(nativePath(path).c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw systemFailure(errno, path);
  }
  if (S_ISDIR(status.st_mode)) throw systemFailure(EISDIR, path);
  OutputFile file({path, O_RDWR | O_NOFOLLOW | kOpenAlways}, false);
  file.requireOneHardLink();
  return file;
}

OutputFile OutputFile::openToReplace(const std::wstring& path) {
  OutputFile file = openToRead(path);
  file.requireOneHardLink();
  return file;
}

OutputFile OutputFile::openToRead(const std::wstring& path) {
  return {FileDescriptor::openInAnyCase(path, O_RDONLY | kOpenAlways), false};
}

OutputFile::OutputFile(FileDescriptor file, bool created)
    : file_(std::move(file)), removeAtEnd_(created) {
  const mode_t mode = file_.status().st_mode;
  if (S_ISDIR(mode)) throw systemFailure(EISDIR, path());
  if (!S_ISREG(mode)) throw fileFailure(path(), "not a regular file");
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : file_(std::move(other.file_)), removeAtEnd_(std::exchange(other.removeAtEnd_, false)) {}

OutputFile::~OutputFile() {
  if (!removeAtEnd_) return;
  const std::string native = nativePath(path());
  // Closed first, because FUSE and NFS keep a hidden file if an open file is removed.
  { const FileDescriptor closed = std::move(file_); }
  unlink(native.c_str());
}

void OutputFile::requireOneHardLink() const {
  if (file_.status().st_nlink > 1) throw fileFailure(path(), "the file has a second hard link");
}

void OutputFile::write(std::uint64_t offset, std::span<const ByteView> parts) {
  std::vector<iovec> pieces = gather(parts);
  for (std::span<iovec> left = pieces; !left.empty();) {
    const int count = static_cast<int>(std::min<std::size_t>(left.size(), IOV_MAX));
    const ssize_t written = pwritev(file_.number(), left.data(), count, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw systemFailure(errno, path());
    if (written == 0) throw systemFailure(ENOSPC, path());
    offset += static_cast<std::uint64_t>(written);
    left = dropFront(left, static_cast<std::size_t>(written));
  }
}

std::size_t OutputFile::readAt(std::uint64_t offset, std::span<std::uint8_t> into) const {
  return file_.readAt(offset, into);
}

void OutputFile::read(std::uint64_t offset, std::span<std::uint8_t> into) const {
  if (readAt(offset, into) < into.size()) throw fileFailure(path(), "the file ends too early");
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

// copy_file_range shares blocks where the file system can. What it cannot do, such as a copy
// between two file systems, is read and written.
void OutputFile::copyAll(const OutputFile& source) {
  const std::uint64_t size = source.size();
  off_t done = 0;
  while (static_cast<std::uint64_t>(done) < size) {
    off_t to = done;
    const ssize_t copied = copy_file_range(source.file_.number(), &done, file_.number(), &to,
                                           size - static_cast<std::uint64_t>(done), 0);
    if (copied < 0 && errno == EINTR) continue;
    if (copied <= 0) break;
  }
  const auto begun = static_cast<std::uint64_t>(done);
  copy(source, begun, size - begun, begun);
}

void OutputFile::cutBack(std::uint64_t size) noexcept {
  while (ftruncate(file_.number(), static_cast<off_t>(size)) != 0 && errno == EINTR) {
  }
}

void OutputFile::close() {
  file_.close();
  removeAtEnd_ = false;
}

}  // namespace orvane
