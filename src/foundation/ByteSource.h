#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/Bytes.h"

namespace orvane {

/// Bytes that are read by position: those of a file, or some in memory.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  virtual std::uint64_t size() const = 0;

  /// Copies the bytes from `offset` on and returns their number, which is less than `into.size()`
  /// only at the end of the source. A read that fails throws Failure or counts as the end; the
  /// source says which.
  virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const = 0;
};

/// Bytes in memory, which outlive it.
class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(ByteView bytes) : bytes_(bytes) {}

  std::uint64_t size() const override { return bytes_.size(); }

  std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
    if (offset >= bytes_.size()) return 0;
    const std::size_t count = std::min<std::uint64_t>(into.size(), bytes_.size() - offset);
    std::copy_n(bytes_.data() + offset, count, into.data());
    return count;
  }

 private:
  ByteView bytes_;
};

}  // namespace orvane
