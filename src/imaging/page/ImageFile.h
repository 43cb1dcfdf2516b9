#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/FileDescriptor.h"
#include "imaging/page/Bytes.h"

namespace orvane {

/// A regular file, opened once and read by position. A small one is read whole at once; a larger
/// one is read piece by piece and never mapped, so that a file cut short by somebody else is a
/// short read and no crash.
class ImageFile {
 public:
  /// Throws Failure with path and reason.
  explicit ImageFile(const std::wstring& path);

  std::uint64_t size() const { return size_; }

  /// All bytes of a small file; empty for a larger one.
  ByteView wholeContent() const { return {content_.get(), content_ ? size_ : 0}; }

  /// Copies up to `size` bytes from `offset` on; answers how many there were. A read that fails
  /// counts as the end of the file.
  std::size_t readAt(std::uint64_t offset, std::uint8_t* to, std::size_t size) const noexcept;

 private:
  std::size_t readFromDisk(std::uint64_t offset, std::uint8_t* to, std::size_t size) const noexcept;

  FileDescriptor descriptor_;
  std::uint64_t size_ = 0;
  std::unique_ptr<std::uint8_t[]> content_;
};

}  // namespace orvane
