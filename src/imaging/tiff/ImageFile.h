#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "foundation/ByteSource.h"
#include "foundation/Bytes.h"
#include "foundation/FileDescriptor.h"

namespace orvane {

/// A regular file, opened once and read by position. A small file is read into memory at once. A
/// larger one is read piece by piece; it is not mapped, so that a file that another process
/// truncates gives a short read and not a crash.
class ImageFile final : public ByteSource {
 public:
  /// Throws Failure with path and reason.
  explicit ImageFile(const std::wstring& path);

  std::uint64_t size() const override { return size_; }

  /// All bytes of a small file; empty for a larger one.
  ByteView wholeContent() const { return {content_.get(), content_ ? size_ : 0}; }

  /// A read that fails counts as the end of the file: libtiff calls this, and no exception may pass
  /// through C.
  std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const noexcept override;

 private:
  std::size_t readFromDisk(std::uint64_t offset, std::span<std::uint8_t> into) const noexcept;

  FileDescriptor descriptor_;
  std::uint64_t size_ = 0;
  std::unique_ptr<std::uint8_t[]> content_;
};

}  // namespace orvane
