#include "imaging/tiff/ImageFile.h"

namespace orvane {
namespace {

// Covers a scanned page; a file with many pages is not read whole for each of them.
constexpr std::uint64_t kWholeFileLimit = 4U << 20;

}  // namespace

ImageFile::ImageFile(const std::wstring& path)
    : descriptor_(FileDescriptor::openRegularFile(path)), size_(descriptor_.state().size) {
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
  int error = 0;  // what was read before it counts
  return descriptor_.tryToReadAt(offset, into, error);
}

}  // namespace orvane
