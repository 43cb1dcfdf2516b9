#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "imaging/jpeg/jpeg_header.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {

/// The entropy-coded data of a JPEG scan, cut at its markers, without the zero byte that follows
/// each byte 0xFF (ITU-T T.81 B.1.1.5).
class EntropySegments {
 public:
  explicit EntropySegments(ByteView data) : data_(data) {}

  /// The bytes up to the next marker, or to the end where there is none. They live until the next
  /// call.
  ByteView next();

  /// Takes the restart marker that is due, if it is the next one.
  bool takeRestart();

  bool atEndOfImage() const { return afterMarker(jpeg_marker::kEndOfImage) != 0; }

  /// What has not been taken yet.
  ByteView left() const { return data_; }

 private:
  std::size_t afterMarker(std::uint8_t marker) const;

  ByteView data_;
  Bytes segment_;
  std::uint8_t restarts_ = 0;
};

/// Appends `bytes` to a JPEG stream with a zero byte after each byte 0xFF.
void appendStuffed(Bytes& stream, ByteView bytes);

/// Walks the entropy-coded data of a stream, MCU by MCU, and gives what it finds to a sink:
///
///     sink.dc(component, value)      the DC coefficient of the next block
///     sink.ac(index, value)          an AC coefficient, `index` in zigzag order; some of them 0
///     sink.endBlock()
///
/// Strict: every MCU, every restart marker and the end of the image must be there. Throws Failure
/// for damage. Values are in the range of 8-bit samples: DC -1024 to 1023, AC -1023 to 1023.
class JpegScan {
 public:
  explicit JpegScan(const JpegSource& source);
  JpegScan(const JpegScan&) = delete;
  JpegScan& operator=(const JpegScan&) = delete;

  template <typename Sink>
  void walk(Sink& sink) {
    walkBlocks([&](BitReader& bits, std::size_t component) { walkBlock(bits, component, sink); });
  }

  /// The same walk for its failures alone, in half the time.
  void verify();

  /// After the walk: the data of the stream up to the end of the image, as it is stored.
  ByteView walkedData() const {
    return source_.data.first(source_.data.size() - segments_.left().size());
  }

 private:
  static constexpr int kLeastDc = -1024;
  static constexpr int kMostDc = 1023;

  // `BitReader::refill` makes 56 bits ready.
  static constexpr unsigned kShortStepsARefill = 56 / CoefficientDecoder::kShortBits;

  using Decoders = std::array<std::optional<CoefficientDecoder>, 4>;

  struct Component {
    const CoefficientDecoder& dc;
    const CoefficientDecoder& ac;
    std::uint32_t blocksPerMcu;
    int lastDc = 0;
  };

  // Calls `walkOne` for each block.
  template <typename WalkOne>
  void walkBlocks(WalkOne walkOne) {
    const std::uint32_t total = source_.mcuCount();
    const std::uint32_t interval = source_.restartInterval == 0 ? total : source_.restartInterval;
    while (mcu_ < total) {
      if (mcu_ != 0 && !segments_.takeRestart()) fail("a restart marker is missing");
      walkInterval(std::min(interval, total - mcu_), walkOne);
    }
    --mcu_;
    if (!segments_.atEndOfImage()) fail("the end of the image is missing");
  }

  template <typename WalkOne>
  void walkInterval(std::uint32_t mcus, WalkOne& walkOne) {
    for (Component& component : components_) component.lastDc = 0;
    const ByteView data = segments_.next();
    BitReader bits(data);
    for (const std::uint32_t end = mcu_ + mcus; mcu_ < end; ++mcu_) {
      for (std::size_t i = 0; i < components_.size(); ++i) {
        for (std::uint32_t block = 0; block < components_[i].blocksPerMcu; ++block) {
          walkOne(bits, i);
        }
      }
      if (bits.overran()) fail("the data ends");
    }
    if (data.size() * 8 - bits.position() >= 8) fail("there is data left over");
  }

  template <typename Sink>
  void walkBlock(BitReader& bits, std::size_t index, Sink& sink) {
    Component& component = components_[index];
    takeDc(bits, component);
    sink.dc(index, component.lastDc);
    walkAc(bits, component.ac, sink);
    sink.endBlock();
  }

  void takeDc(BitReader& bits, Component& component) const {
    bits.refill();
    component.lastDc += takeStep(bits, component.dc).value;
    if (component.lastDc < kLeastDc || component.lastDc > kMostDc) fail("a value is out of range");
  }

  void passOverAc(BitReader& bits, const CoefficientDecoder& decoder,
                  const CoefficientRuns& runs) const;

  // The bits for a first batch of steps are left over from the DC coefficient.
  template <typename Sink>
  void walkAc(BitReader& bits, const CoefficientDecoder& decoder, Sink& sink) {
    for (unsigned index = 0;; bits.refill()) {
      for (unsigned i = 0; i < kShortStepsARefill - 1; ++i) {
        const CoefficientStep step = takeStep(bits, decoder);
        index += step.advance;
        if (index > 63) {
          if (index < CoefficientStep::kEndOfBlock) fail("a block is too long");
          return;
        }
        sink.ac(index, step.value);
        if (index == 63) return;
      }
    }
  }

  // Takes a short step from the bits that are ready; a long one needs refills before and after.
  CoefficientStep takeStep(BitReader& bits, const CoefficientDecoder& decoder) const {
    CoefficientStep step = decoder.shortStep(bits.bits());
    if (step.length == 0) {
      bits.refill();
      step = decoder.anyStep(bits.bits());
      if (step.length == 0) fail("bad code");
      bits.skip(step.length);
      bits.refill();
    } else {
      bits.skip(step.length);
    }
    return step;
  }

  [[noreturn]] void fail(const char* what) const;

  const JpegSource& source_;
  EntropySegments segments_;
  Decoders dcDecoders_;  // of the tables that the components use
  Decoders acDecoders_;
  std::vector<Component> components_;
  std::uint32_t mcu_ = 0;
};

}  // namespace orvane
