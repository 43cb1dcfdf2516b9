#include "pixel_digest.h"

#include <algorithm>
#include <cstdint>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "foundation/Sha256.h"
#include "imaging/group4/ChangingElements.h"
#include "imaging/group4/Group4RowReader.h"
#include "imaging/raster/conversion.h"

namespace orvane::station {
namespace {

std::string formOf(const Raster& page) {
  std::string form = std::to_string(page.width) + ' ' + std::to_string(page.height) + ' ' +
                     std::to_string(page.bitsPerSample) + ' ' +
                     std::to_string(page.samplesPerPixel) + ' ' +
                     std::to_string(static_cast<int>(page.model)) + ' ' +
                     std::to_string(static_cast<int>(page.extraSample));
  for (const std::uint16_t value : page.palette) form += ' ' + std::to_string(value);
  return form + ':';
}

// The digest of a 1-bit page, made of the places where the colour of its rows changes: this is what
// Group 4 stores.
class InkDigest {
 public:
  InkDigest(std::uint32_t width, std::uint32_t height) : bytesPerPlace_(width > 0xFFFF ? 4 : 2) {
    buffer_.reserve(2 * kChunk);
    form_ = "ink " + std::to_string(width) + ' ' + std::to_string(height) + ':';
  }

  // Adds a row with ink at its 1 bits.
  void addRow(const std::uint8_t* row, std::uint32_t width) {
    unsigned colour = 0;
    for (std::uint32_t x = 0; x < width;) {
      const unsigned byte = row[x / 8];
      const std::uint32_t end = std::min(width, x + 8);
      if (byte == (colour != 0 ? 0xFFu : 0u)) x = end;
      for (; x < end; ++x) {
        const unsigned bit = byte >> (7 - x % 8) & 1u;
        if (bit != colour) addPlace(x);
        colour = bit;
      }
    }
    endRow(width);
  }

  // Adds a row as Group 4 has it. Where its 1 bits are paper, ink begins at the left edge.
  void addRow(const group4::ChangingElements& row, bool isInverted) {
    const std::int32_t* change = row.first();
    if (isInverted && *change == 0) {
      ++change;
    } else if (isInverted) {
      addPlace(0);
    }
    for (; *change < row.width(); ++change) addPlace(static_cast<std::uint32_t>(*change));
    endRow(static_cast<std::uint32_t>(row.width()));
  }

  std::string finish() {
    flush();
    return form_ + sha256_.inHexadecimal();
  }

 private:
  static constexpr std::size_t kChunk = 16384;

  void addPlace(std::uint32_t place) {
    for (int i = 0; i < bytesPerPlace_; ++i, place >>= 8) {
      buffer_.push_back(static_cast<std::uint8_t>(place));
    }
  }

  void endRow(std::uint32_t width) {
    addPlace(width);
    if (buffer_.size() >= kChunk) flush();
  }

  void flush() {
    sha256_.add(buffer_);
    buffer_.clear();
  }

  Sha256 sha256_;
  const int bytesPerPlace_;
  std::string form_;
  Bytes buffer_;
};

bool isBlackAndWhite(const Raster& page) {
  return page.bitsPerPixel() == 1 && page.model <= ColourModel::MinIsBlack;
}

}  // namespace

std::string pixelDigest(const Raster& page) {
  if (!isBlackAndWhite(page)) {
    Sha256 sha256;
    sha256.add(page.pixels);
    return formOf(page) + sha256.inHexadecimal();
  }
  const Raster ink = toBilevel(page);
  InkDigest digest(ink.width, ink.height);
  for (std::uint32_t y = 0; y < ink.height; ++y) digest.addRow(ink.row(y), ink.width);
  return digest.finish();
}

std::string pixelDigest(const EncodedImage& group4) {
  using namespace group4;
  const auto width = static_cast<std::int32_t>(group4.width);
  const bool isInverted = group4.photometric == Photometric::MinIsBlack;
  InkDigest digest(group4.width, group4.height);
  std::uint32_t rowsLeft = group4.height;
  for (const Bytes& strip : group4.strips) {
    ChangingElements row(width, Group4RowReader::mostChanges(width, strip.size()));
    ChangingElements spare = row;
    Group4RowReader reader(strip);
    const std::uint32_t rows = std::min(rowsLeft, group4.rowsPerStrip);
    rowsLeft -= rows;
    for (std::uint32_t i = 0; i < rows; ++i) {
      if (reader.readRows(1, row, spare) != RowFault::None)
        throw Failure("a strip is not verified");
      digest.addRow(row, isInverted);
    }
  }
  return digest.finish();
}

}  // namespace orvane::station
