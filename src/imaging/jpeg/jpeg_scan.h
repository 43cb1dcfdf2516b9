#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "imaging/jpeg/jpeg_header.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {

/// The entropy-coded data of a JPEG scan, cut at its markers and freed of the zero bytes that are
/// stuffed behind each 0xFF (ITU-T T.81 B.1.1.5).
class EntropySegments {
 public:
  explicit EntropySegments(ByteView data) : data_(data) {}

  /// The bytes up to the next marker, or to the end where there is none. They live until the next
  /// call.
  ByteView next();

  /// Takes the restart marker that is due, if it is the next one.
  bool takeRestart();

  bool atEndOfImage() const;

  /// What has not been taken yet.
  ByteView left() const { return data_; }

 private:
  bool atMarker(std::uint8_t marker) const;

  ByteView data_;
  Bytes segment_;
  std::uint8_t restarts_ = 0;
};

/// Appends `bytes` to a JPEG stream with a zero byte stuffed behind each 0xFF.
void appendStuffed(Bytes& stream, ByteView bytes);

/// Walks the entropy-coded data of a stream, MCU by MCU, and gives what it finds to a sink:
///
///     sink.dc(component, value)      the DC coefficient of the next block
///     sink.ac(index, value)          one AC coefficient other than 0, `index` in zigzag order
///     sink.endBlock()
///
/// Strict: every MCU, every restart marker and the end of the image have to be there. Throws
/// Failure for damage. Values lie in the range of 8-bit samples: DC -1024 to 1023, AC -1023 to
/// 1023.
class JpegScan {
 public:
  explicit JpegScan(const JpegHeader& header) : header_(header), segments_(header.data) {
    for (const auto& component : header.components) {
      coders_.push_back(
          {HuffmanDecoder(*header.dcTables[component.dcTable]),
           HuffmanDecoder(*header.acTables[component.acTable]),
           header.isGray() ? 1u : unsigned{component.horizontal} * component.vertical});
    }
  }

  template <typename Sink>
  void walk(Sink& sink) {
    const std::uint32_t total = header_.mcusPerRow() * header_.mcuRows();
    const std::uint32_t interval = header_.restartInterval == 0 ? total : header_.restartInterval;
    while (mcu_ < total) {
      if (mcu_ != 0 && !segments_.takeRestart()) fail("a restart marker is missing");
      walkInterval(std::min(interval, total - mcu_), sink);
    }
    --mcu_;
    if (!segments_.atEndOfImage()) fail("the end of the image is missing");
  }

  /// After the walk: the data as it lies in the stream, up to the end of the image.
  ByteView walkedData() const {
    return header_.data.first(header_.data.size() - segments_.left().size());
  }

 private:
  static constexpr unsigned kMostDcSize = 11;
  static constexpr unsigned kMostAcSize = 10;
  static constexpr int kLeastDc = -1024;
  static constexpr int kMostDc = 1023;

  struct Coder {
    HuffmanDecoder dc;
    HuffmanDecoder ac;
    unsigned blocksPerMcu;
    int lastDc = 0;
  };

  template <typename Sink>
  void walkInterval(std::uint32_t mcus, Sink& sink) {
    for (Coder& coder : coders_) coder.lastDc = 0;
    const ByteView data = segments_.next();
    BitReader bits(data);
    for (const std::uint32_t end = mcu_ + mcus; mcu_ < end; ++mcu_) {
      for (std::size_t i = 0; i < coders_.size(); ++i) {
        for (unsigned block = 0; block < coders_[i].blocksPerMcu; ++block) {
          walkBlock(bits, i, sink);
        }
      }
      if (bits.overran()) fail("the data ends");
    }
    if (data.size() * 8 - bits.position() >= 8) fail("there is data left over");
  }

  template <typename Sink>
  void walkBlock(BitReader& bits, std::size_t component, Sink& sink) {
    Coder& coder = coders_[component];
    bits.refill();
    const HuffmanDecoder::Hit dc = coder.dc.find(bits.bits());
    if (dc.length == 0 || dc.symbol > kMostDcSize) fail("bad code");
    coder.lastDc += takeValue(bits, dc.length, dc.symbol);
    if (coder.lastDc < kLeastDc || coder.lastDc > kMostDc) fail("a value is out of range");
    sink.dc(component, coder.lastDc);
    for (unsigned index = 1; index < 64; ++index) {
      bits.refill();
      const HuffmanDecoder::Hit ac = coder.ac.find(bits.bits());
      const unsigned run = ac.symbol >> 4;
      const unsigned size = ac.symbol & 15;
      if (size - 1u >= kMostAcSize) {
        if (ac.length == 0 || size != 0 || (run != 0 && run != 15)) fail("bad code");
        bits.skip(ac.length);
        if (run == 0) break;  // the end of the block
        index += 15;          // sixteen zeros
        if (index >= 64) fail("a block is too long");
        continue;
      }
      const int value = takeValue(bits, ac.length, size);
      index += run;
      if (index >= 64) fail("a block is too long");
      sink.ac(index, value);
    }
    sink.endBlock();
  }

  // Takes a code and the `size` bits of its value (T.81 figure F.12).
  static int takeValue(BitReader& bits, unsigned codeLength, unsigned size) {
    const auto raw = static_cast<int>(bits.bits() << codeLength >> 1 >> (63 - size));
    bits.skip(codeLength + size);
    const int half = 1 << size >> 1;
    return raw >= half ? raw : raw - (1 << size) + 1;
  }

  [[noreturn]] void fail(const char* what) const {
    throw Failure("JPEG: row of blocks " + std::to_string(mcu_ / header_.mcusPerRow() + 1) + ": " +
                  what);
  }

  const JpegHeader& header_;
  EntropySegments segments_;
  std::vector<Coder> coders_;
  std::uint32_t mcu_ = 0;
};

}  // namespace orvane
