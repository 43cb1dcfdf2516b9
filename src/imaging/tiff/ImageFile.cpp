#include "imaging/tiff/ImageFile.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/Failure.h"

namespace orvane {
namespace {

// Covers a scanned page; a file with many pages is not read whole for each of them.
constexpr std::uint64_t kWholeFileLimit = 4U << 20;

std::uint64_t sizeOf(const FileDescriptor& descriptor, const std::wstring& path) {
  struct stat status {};
  if (fstat(descriptor.number(), &status) != 0) throw systemFailure(errno, path);
  return static_cast<std::uint64_t>(status.st_size);
}

}  // namespace

ImageFile::ImageFile(const std::wstring& path)
    : descriptor_(FileDescriptor::openRegularFile(path)), size_(sizeOf(descriptor_, path)) {
  if (size_ > kWholeFileLimit) return;
  content_ = std::make_unique_for_overwrite<std::uint8_t[]>(size_);
  size_ = readFromDisk(0, {content_.get(), size_});
}

std::size_t ImageFile::readAt(std::uint64_t offset, std::span<std::uint8_t> into) const noexcept {
  if (content_) return MemorySource(wholeContent()).readAt(offset, into);
  return readFromDisk(offset, into);
}

std::size_t ImageFile::readFromDisk(std::uint64_t offset,
                                    std::span<std::uint8_t> into) const noexcept {
  if (offset >= size_) return 0;
  std::size_t done = 0;
  while (done < into.size()) {
    const ssize_t count = pread(descriptor_.number(), into.data() + done, into.size() - done,
                                static_cast<off_t>(offset + done));
    if (count == 0 || (count < 0 && errno != EINTR)) break;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return done;
}

}  // namespace orvane
