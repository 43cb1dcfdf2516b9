#include "imaging/lzw/lossless.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

// Small enough for readers that decode strip by strip, or several at once; large enough for the
// LZW dictionary, which starts empty in each strip, to fill several times.
constexpr std::size_t kStripBytes = std::size_t{128} << 10;

// An image of the raster's form, divided into strips that are still empty.
EncodedImage inEmptyStrips(const Raster& raster, Compression compression) {
  EncodedImage image = encodedFormOf(raster);
  const std::size_t rows = std::max<std::size_t>(kStripBytes / raster.rowBytes(), 1);
  image.compression = compression;
  image.rowsPerStrip = static_cast<std::uint32_t>(std::min<std::size_t>(rows, raster.height));
  image.strips.resize((raster.height - 1) / image.rowsPerStrip + 1);
  return image;
}

// The rows of one strip of an image.
struct Rows {
  std::uint32_t top;
  std::uint32_t count;
};

Rows rowsOfStrip(const EncodedImage& image, std::size_t strip) {
  const auto top = static_cast<std::uint32_t>(strip * image.rowsPerStrip);
  return {top, std::min(image.rowsPerStrip, image.height - top)};
}

bool needsSwap(const Raster& raster, SampleOrder order) {
  const bool machineIsLittle = std::endian::native == std::endian::little;
  return raster.bitsPerSample == 16 && machineIsLittle != (order == SampleOrder::LittleEndian);
}

// Puts the rows into `samples` as a TIFF file holds them: 16-bit samples in `order`.
void copySamples(const Raster& raster, Rows rows, SampleOrder order, Bytes& samples) {
  const ByteView in(raster.row(rows.top), rows.count * raster.rowBytes());
  samples.assign(in.begin(), in.end());
  if (!needsSwap(raster, order)) return;
  for (std::size_t i = 0; i + 1 < samples.size(); i += 2) std::swap(samples[i], samples[i + 1]);
}

// True for forms whose samples are quantities of one byte, so that differences of neighbours are
// small. At 16 bits the predictor would save a tenth of a colour page, but the TIFF reader of Java
// refuses it there.
bool suitsHorizontalPredictor(const Raster& raster) {
  return raster.bitsPerSample == 8 && raster.model != ColourModel::Palette;
}

// As `copySamples`, each 8-bit sample being its difference from the same sample of the pixel to its
// left (TIFF 6.0 section 14).
void differenceSamples(const Raster& raster, Rows rows, SampleOrder, Bytes& samples) {
  const std::size_t perPixel = raster.samplesPerPixel;
  const std::size_t rowBytes = raster.rowBytes();
  samples.resize(rows.count * rowBytes);
  for (std::uint32_t y = 0; y < rows.count; ++y) {
    const std::uint8_t* in = raster.row(rows.top + y);
    std::uint8_t* out = samples.data() + y * rowBytes;
    for (std::size_t i = 0; i < perPixel; ++i) out[i] = in[i];
    for (std::size_t i = perPixel; i < rowBytes; ++i) {
      out[i] = static_cast<std::uint8_t>(in[i] - in[i - perPixel]);
    }
  }
}

// LZW as TIFF 6.0 section 13 has it: codes of 9 to 12 bits, the highest bit first, each width left
// one code early.

constexpr std::uint32_t kClearCode = 256;
constexpr std::uint32_t kEndCode = 257;
constexpr std::uint32_t kFirstFree = 258;
constexpr std::uint32_t kLastCode = 4094;
constexpr unsigned kFirstWidth = 9;
constexpr unsigned kLastWidth = 12;

// The width of the code that is written when `next` is the next free code.
unsigned codeWidth(std::size_t next) {
  return std::min(static_cast<unsigned>(std::bit_width(next)), kLastWidth);
}

// At most one code of 12 bits for each byte, and the clear codes.
constexpr std::size_t mostOutput(std::size_t stripBytes) {
  return stripBytes + stripBytes / 2 + stripBytes / 1024 + 64;
}

// The sequences of bytes that the codes of one strip stand for.
struct LzwDictionary {
  // A place for each pair of a byte and the code of the sequence before it.
  static constexpr std::size_t placeOf(std::size_t code, std::size_t byte) {
    return byte << kLastWidth | code;
  }
  static constexpr std::size_t codeOf(std::size_t place) { return place % (1u << kLastWidth); }

  // By place: the code of the longer sequence less the byte, or 0 where it has no code yet.
  std::array<std::uint16_t, 256 << kLastWidth> steps{};

  // The places of the longer sequences, by their codes; for as many codes as have been given.
  std::array<std::uint32_t, 1 << kLastWidth> places;

  Bytes output;  // kept from strip to strip
  BitPen pen;
};

// One strip at work. The numbers that change with each byte are kept apart from the dictionary, so
// that they stay in registers.
class LzwStripEncoder {
 public:
  LzwStripEncoder(LzwDictionary& dictionary, ByteView strip)
      : dictionary_(dictionary), sequence_(strip.empty() ? 0 : strip[0]) {
    Bytes& output = dictionary_.output;
    output.resize(std::max(output.size(), mostOutput(strip.size())));
    dictionary_.pen = BitPen(output.data());
    dictionary_.pen.put(kClearCode, kFirstWidth);
  }

  // The step leads from the byte to the sequence to go on with: the longer one, or the byte alone
  // where the longer one becomes known only now. So there is no branch here that depends on the
  // data, which the processor would often predict wrongly.
  void take(std::size_t byte) {
    const std::size_t place = LzwDictionary::placeOf(sequence_, byte);
    const std::size_t step = dictionary_.steps[place];
    const std::size_t isNew = step == 0 ? 1 : 0;
    dictionary_.steps[place] = static_cast<std::uint16_t>(step + isNew * (next_ - byte));
    dictionary_.places[next_] = static_cast<std::uint32_t>(place);
    sequence_ = byte + step;
    next_ += isNew;
    if (next_ > kLastCode) [[unlikely]] {
      writeCodes(dictionary_, next_);
      dictionary_.pen.put(kClearCode, kLastWidth);
      next_ = kFirstFree;
    }
  }

  Bytes finish() {
    dictionary_.places[next_++] = static_cast<std::uint32_t>(sequence_);
    writeCodes(dictionary_, next_);
    dictionary_.pen.put(kEndCode, codeWidth(next_));
    return Bytes(dictionary_.output.data(), dictionary_.pen.end());
  }

 private:
  // Forgets the longer sequence with this code. Returns the code of the sequence before it.
  static std::uint32_t takeOut(LzwDictionary& dictionary, std::size_t code) {
    const std::uint32_t place = dictionary.places[code];
    dictionary.steps[place] = 0;
    return static_cast<std::uint32_t>(LzwDictionary::codeOf(place));
  }

  // Each longer sequence became known when the code of the one before it was due. Writes these
  // codes and forgets the sequences.
  static void writeCodes(LzwDictionary& dictionary, std::size_t next) {
    BitPen pen = dictionary.pen;
    std::size_t code = kFirstFree;
    for (unsigned width = kFirstWidth; width <= kLastWidth && code < next; ++width) {
      const std::size_t end = width == kLastWidth ? next : std::min<std::size_t>(next, 1U << width);
      for (; code + 1 < end; code += 2) {  // two at once, because the pen is what takes time here
        const std::uint32_t first = takeOut(dictionary, code) << width;
        pen.put(first | takeOut(dictionary, code + 1), 2 * width);
      }
      if (code < end) pen.put(takeOut(dictionary, code++), width);
    }
    dictionary.pen = pen;
  }

  LzwDictionary& dictionary_;
  std::size_t sequence_;  // the code of the bytes taken since the last code
  std::size_t next_ = kFirstFree;
};

using LzwDictionaries = std::array<LzwDictionary, 2>;

// Encodes two strips, each by itself. They take turns byte by byte: while the processor waits for
// memory in one it works on the other. An empty strip gives no bytes.
std::array<Bytes, 2> encodeStrips(LzwDictionaries& dictionaries,
                                  const std::array<ByteView, 2>& strips) {
  const auto& [left, right] = strips;
  LzwStripEncoder leftEncoder(dictionaries[0], left);
  LzwStripEncoder rightEncoder(dictionaries[1], right);
  const std::size_t both = std::min(left.size(), right.size());
  for (std::size_t i = 1; i < both; ++i) {
    leftEncoder.take(left[i]);
    rightEncoder.take(right[i]);
  }
  const std::size_t alone = std::max<std::size_t>(both, 1);
  for (std::size_t i = alone; i < left.size(); ++i) leftEncoder.take(left[i]);
  for (std::size_t i = alone; i < right.size(); ++i) rightEncoder.take(right[i]);
  return {left.empty() ? Bytes() : leftEncoder.finish(),
          right.empty() ? Bytes() : rightEncoder.finish()};
}

}  // namespace

EncodedImage encodeUncompressed(const Raster& raster, SampleOrder order) {
  EncodedImage image = inEmptyStrips(raster, Compression::None);
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    copySamples(raster, rowsOfStrip(image, i), order, image.strips[i]);
  }
  return image;
}

EncodedImage inOnePlainStrip(Raster&& raster) {
  EncodedImage image = encodedFormOf(raster);
  image.rowsPerStrip = raster.height;
  image.strips.push_back(std::move(raster.pixels));
  return image;
}

EncodedImage encodeLzw(const Raster& raster, SampleOrder order,
                       const std::function<void()>& pause) {
  EncodedImage image = inEmptyStrips(raster, Compression::Lzw);
  image.horizontalPredictor = suitsHorizontalPredictor(raster);
  const auto prepare = image.horizontalPredictor ? differenceSamples : copySamples;
  const auto dictionaries = std::make_unique<LzwDictionaries>();
  Bytes left, right;
  for (std::size_t i = 0; i < image.strips.size(); i += 2) {
    const bool isPair = i + 1 < image.strips.size();
    prepare(raster, rowsOfStrip(image, i), order, left);
    if (isPair) prepare(raster, rowsOfStrip(image, i + 1), order, right);
    pause();
    auto [leftStrip, rightStrip] =
        encodeStrips(*dictionaries, {left, isPair ? ByteView(right) : ByteView()});
    image.strips[i] = std::move(leftStrip);
    if (isPair) image.strips[i + 1] = std::move(rightStrip);
  }
  return image;
}

}  // namespace orvane
