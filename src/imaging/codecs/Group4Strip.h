#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "imaging/codecs/ChangingElements.h"
#include "imaging/page/EncodedImage.h"

namespace orvane::group4 {

/// Wider than any paper at any resolution; a row's changing elements then take 64 MiB at most.
inline constexpr std::uint32_t kMostWidth = 1u << 24;

/// A strip that has been read from end to end.
struct Group4Strip {
  std::optional<std::string> damage;  ///< what follows holds only for a strip without damage
  std::uint32_t rows = 0;     ///< coded; an end of block may come before the strip's last row
  bool isStandard = true;     ///< false: read by the lenient reader, and what follows is not known
  ChangingElements firstRow;  ///< both are white when no row is coded
  ChangingElements lastRow;
  std::size_t firstRowEnd = 0;  ///< in bits from the strip's begin
  std::size_t lastRowEnd = 0;
};

/// Reads strip `index` of an image that `findLayoutDamage` has passed.
Group4Strip readStrip(const EncodedImage& image, std::size_t index);

/// The rows that strip `index` has room for; the last strip of an image may be shorter.
std::uint32_t rowsOfStrip(const EncodedImage& image, std::size_t index);

/// What is wrong with an image before any code is read: not bilevel, no or too many pixels in a
/// row, missing strips.
std::optional<std::string> findLayoutDamage(const EncodedImage& image);

}  // namespace orvane::group4
