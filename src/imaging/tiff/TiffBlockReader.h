#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "imaging/tiff/TiffHandle.h"
#include "imaging/tiff/TiffLayout.h"

namespace orvane {

/// The result of decoding the strips or tiles of a page.
struct BlockTally {
  std::optional<std::string> damage;  ///< why the first block that is not whole is not
  bool anyRow = false;                ///< at least one row of pixels could be decoded
};

/// Decodes strips and tiles one by one, and salvages what can be read of a damaged one. A block
/// counts as whole only when all its bytes came and agree with their checksum, if its compression
/// has one.
class TiffBlockReader {
 public:
  TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout);

  /// Decodes block `index` to `to`, `rows` rows of `rowBytes` bytes each. Returns how many of them
  /// hold pixels; what `to` holds after those is no part of the page.
  std::uint32_t read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                     std::size_t rowBytes);

  /// For pages whose pixels another reader decodes: notes whether that could decode a block, and
  /// examines what it does not look at. Returns true if the block is whole.
  bool noteDecoded(std::uint32_t index, bool decoded);

  const BlockTally& tally() const { return tally_; }

 private:
  bool decompressBlock(std::uint32_t index, std::span<std::uint8_t> to, std::size_t rowBytes);
  std::uint64_t streamBytes(std::uint32_t rows) const;
  void finishSamples(std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes) const;
  bool libtiffDecodes(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                      std::size_t rowBytes);
  std::uint32_t salvage(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                        std::size_t rowBytes);
  void noteDamage(const std::string& reason);

  TiffHandle& tiff_;
  const TiffLayout& layout_;
  std::uint64_t surplus_;  ///< bytes that compressed blocks may still hold after their rows
  BlockTally tally_;
};

}  // namespace orvane
