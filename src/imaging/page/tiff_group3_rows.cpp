#include <algorithm>
#include <utility>

#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_strips.h"

namespace orvane {
namespace {

constexpr unsigned kEndOfLineZeros = 11;  // at least; no row holds as many in a row
constexpr unsigned kReturnToControl = 6;  // end-of-line codes

// Every row begins with an end-of-line code; where rows may be coded two-dimensionally, a tag bit
// follows it.
std::optional<std::uint32_t> rowsBeforeReturnToControl(ByteView strip, bool hasTags) {
  std::uint32_t endOfLines = 0;
  unsigned zeros = 0, inSequence = 0;
  bool tagFollows = false;
  for (std::size_t i = 0; i < strip.size() * 8; ++i) {
    const bool bit = (strip[i / 8] >> (7 - i % 8) & 1) != 0;
    if (std::exchange(tagFollows, false)) continue;
    if (!bit) {
      ++zeros;
      continue;
    }
    if (std::exchange(zeros, 0U) < kEndOfLineZeros) {
      inSequence = 0;
      continue;
    }
    ++endOfLines;
    if (++inSequence == kReturnToControl) return endOfLines - kReturnToControl;
    tagFollows = hasTags;
  }
  return std::nullopt;
}

}  // namespace

std::optional<StripRows> rowsBeforeReturnToControl(const TiffHandle& tiff,
                                                   const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_CCITTFAX3 || layout.tiled) return std::nullopt;
  const std::optional<std::vector<Bytes>> strips = readFaxStrips(tiff, layout);
  if (!strips) return std::nullopt;
  std::uint32_t options = 0;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_GROUP3OPTIONS, &options);
  const bool hasTags = (options & GROUP3OPT_2DENCODING) != 0;
  StripRows rows;
  std::uint32_t room = layout.height;
  bool hasEnded = false;
  for (const Bytes& strip : *strips) {
    const std::uint32_t full = std::min(room, layout.blockHeight);
    rows.push_back(std::min(full, rowsBeforeReturnToControl(strip, hasTags).value_or(full)));
    if (hasEnded && rows.back() > 0) return std::nullopt;
    hasEnded = rows.back() < full;
    room -= full;
  }
  if (!hasEnded || rows[0] == 0) return std::nullopt;
  return rows;
}

}  // namespace orvane
