#include "imaging/jpeg/jpeg_transcode.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "imaging/jpeg/jpeg_header.h"
#include "imaging/jpeg/jpeg_scan.h"
#include "imaging/jpeg/jpeg_tables.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

using Sources = std::vector<JpegSource>;  // one a strip

constexpr std::uint32_t kMostSide = 65500;  // libjpeg's limit

bool isTranscodable(const EncodedImage& source) {
  const bool gray = source.photometric == Photometric::MinIsBlack && source.samplesPerPixel == 1;
  const bool colour = source.photometric == Photometric::YCbCr && source.samplesPerPixel == 3;
  return source.compression == Compression::Jpeg && (gray || colour) && source.bitsPerSample == 8 &&
         source.rowsPerStrip != 0 && source.width != 0 && source.height != 0 &&
         source.width <= kMostSide && source.height <= kMostSide &&
         source.strips.size() == (source.height - 1) / source.rowsPerStrip + 1;
}

bool sameSampling(const JpegSource& left, const JpegSource& right) {
  return left.mcuWidth() == right.mcuWidth() && left.mcuHeight() == right.mcuHeight();
}

// True when strip `index` holds exactly its part of the page, in whole MCUs unless it is the last.
bool fits(const EncodedImage& page, std::size_t index, const JpegSource& strip) {
  const auto before = static_cast<std::uint32_t>(index) * page.rowsPerStrip;
  const std::uint32_t rows = std::min(page.rowsPerStrip, page.height - before);
  const bool last = index + 1 == page.strips.size();
  return strip.width == page.width && strip.height == rows && !strip.adobeRgb &&
         strip.components.size() == page.samplesPerPixel && (last || rows % strip.mcuHeight() == 0);
}

// The heads of all strips; nothing when one of them cannot be transcoded.
std::optional<Sources> readSources(const EncodedImage& page) {
  Sources sources;
  for (std::size_t i = 0; i < page.strips.size(); ++i) {
    std::optional<JpegSource> source = readJpegHeader(page.strips[i]);
    if (!source || !fits(page, i, *source)) return std::nullopt;
    if (i != 0 && !sameSampling(sources[0], *source)) return std::nullopt;
    sources.push_back(*std::move(source));
  }
  return sources;
}

// The steps of a component: the largest of those of the save and of all strips.
ZigzagTable coarsest(const Sources& sources, std::size_t component, JpegFactors factors) {
  const SaveTables save = saveTables(factors);
  ZigzagTable table = inZigzagOrder(component == 0 ? save.luminance : save.chrominance);
  for (const JpegSource& source : sources) {
    std::ranges::transform(table.steps, source.quantisationOf(component).steps, table.steps.begin(),
                           [](auto left, auto right) { return std::max(left, right); });
  }
  return table;
}

// The head of the page's one stream, with the coarsest steps and the Huffman tables of Annex K.
JpegHeader targetOf(const EncodedImage& page, const Sources& sources, JpegFactors factors) {
  JpegHeader target;
  target.width = static_cast<std::uint16_t>(page.width);
  target.height = static_cast<std::uint16_t>(page.height);
  for (std::uint8_t i = 0; i < page.samplesPerPixel; ++i) {
    JpegComponent component = sources[0].components[i];
    component.id = static_cast<std::uint8_t>(i + 1);
    if (sources[0].isGray()) component.horizontal = component.vertical = 1;
    component.dcTable = component.acTable = i == 0 ? 0 : 1;
    const ZigzagTable table = coarsest(sources, i, factors);
    component.quantisation = 0;
    while (target.quantisation[component.quantisation].value_or(table) != table) {
      ++component.quantisation;
    }
    target.quantisation[component.quantisation] = table;
    target.components.push_back(component);
  }
  target.dcTables[0] = kAnnexKDcLuminance;
  target.acTables[0] = kAnnexKAcLuminance;
  if (page.samplesPerPixel == 3) {
    target.dcTables[1] = kAnnexKDcChrominance;
    target.acTables[1] = kAnnexKAcChrominance;
  }
  return target;
}

bool keepsAllSteps(const Sources& sources, const JpegHeader& target) {
  return std::ranges::all_of(sources, [&target](const JpegSource& source) {
    for (std::size_t i = 0; i < source.components.size(); ++i) {
      if (source.quantisationOf(i) != target.quantisationOf(i)) return false;
    }
    return true;
  });
}

bool sameHuffmanTables(const JpegSource& left, const JpegSource& right) {
  for (std::size_t i = 0; i < left.components.size(); ++i) {
    if (left.dcTableOf(i) != right.dcTableOf(i)) return false;
    if (left.acTableOf(i) != right.acTableOf(i)) return false;
  }
  return true;
}

// True when the strips' data can follow each other in one stream, a restart marker between them.
bool canFollowEachOther(const Sources& sources) {
  if (sources.size() == 1) return true;
  const JpegSource& first = sources[0];
  return first.mcuCount() <= 0xFFFF &&
         std::ranges::all_of(sources, [&first](const JpegSource& source) {
           return source.restartInterval == 0 && sameHuffmanTables(source, first);
         });
}

// A sink for JpegScan that only lets it verify the data.
struct NoSink {
  void dc(std::size_t, int) {}
  void ac(unsigned, int) {}
  void endBlock() {}
};

Bytes copyVerified(const Sources& sources, JpegHeader target, const Resolution& resolution) {
  const JpegSource& first = sources[0];
  for (std::size_t i = 0; i < first.components.size(); ++i) {
    target.components[i].dcTable = first.components[i].dcTable;
    target.components[i].acTable = first.components[i].acTable;
  }
  target.dcTables = first.dcTables;
  target.acTables = first.acTables;
  target.restartInterval =
      sources.size() == 1 ? first.restartInterval : static_cast<std::uint16_t>(first.mcuCount());
  Bytes stream = jfifHead(target, resolution);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    if (i != 0) {
      appendMarker(stream, static_cast<std::uint8_t>(jpeg_marker::kRestart0 + (i - 1) % 8));
    }
    JpegScan scan(sources[i]);
    NoSink sink;
    scan.walk(sink);
    const ByteView data = scan.walkedData();
    stream.insert(stream.end(), data.begin(), data.end());
  }
  return stream;
}

// From a quantisation step to a coarser one: value * from / to, rounded, by multiplication.
class Rescaling {
 public:
  Rescaling() = default;
  Rescaling(std::uint32_t from, std::uint32_t to, std::uint32_t roundingOffset)
      : from_(from), offset_(roundingOffset), reciprocal_((1u << kReciprocalBits) / to + 1) {}

  int scale(int value) const {
    const std::uint64_t dividend = static_cast<std::uint32_t>(std::abs(value)) * from_ + offset_;
    const auto scaled = static_cast<int>(dividend * reciprocal_ >> kReciprocalBits);
    return value < 0 ? -scaled : scaled;
  }

 private:
  // Makes the division exact: the dividend is below 2^19, the divisor below 2^8.
  static constexpr unsigned kReciprocalBits = 28;

  std::uint32_t from_ = 1;
  std::uint32_t offset_ = 0;
  std::uint32_t reciprocal_ = 0;
};

// What to add before the division by `to` so that it rounds. An AC coefficient stands for values
// that are more often below it than above, for small ones are the most frequent; so it is rounded
// down from a little above the middle: from^2 / (4 to) gave the best pictures of scanned pages. The
// DC coefficient is rounded at the middle.
std::uint32_t roundingOffset(std::size_t index, std::uint32_t from, std::uint32_t to) {
  return index == 0 ? to / 2 : to / 2 - (from * from + 2 * to) / (4 * to);
}

// A sink for JpegScan that writes the blocks with the coarser quantisation steps of `target`. The
// blocks of several streams of the same components become one stream.
class Requantiser {
 public:
  explicit Requantiser(const JpegHeader& target) : target_(target) {
    for (std::size_t i = 0; i < target.components.size(); ++i) {
      components_.push_back(
          {HuffmanEncoder(target.dcTableOf(i)), HuffmanEncoder(target.acTableOf(i))});
    }
  }

  // To be called before each stream is walked.
  void beginStream(const JpegSource& source) {
    for (std::size_t i = 0; i < components_.size(); ++i) {
      const auto& from = source.quantisationOf(i).steps;
      const auto& to = target_.quantisationOf(i).steps;
      for (std::size_t k = 0; k < from.size(); ++k) {
        components_[i].rescaling[k] = Rescaling(from[k], to[k], roundingOffset(k, from[k], to[k]));
      }
    }
  }

  void dc(std::size_t component, int value) {
    component_ = &components_[component];
    dc_ = component_->rescaling[0].scale(value);
    keptCount_ = 0;
  }

  // A coefficient that becomes 0 is overwritten by the next one: no branch depends on it.
  void ac(unsigned index, int value) {
    const int scaled = component_->rescaling[index].scale(value);
    kept_[keptCount_] = {index, scaled};
    keptCount_ += scaled != 0 ? 1 : 0;
  }

  void endBlock() {
    bits_.reserve(kMostBlockBytes);
    BitPen pen = bits_.pen();
    putValue(pen, component_->dcCodes, 0, dc_ - component_->lastDc);
    component_->lastDc = dc_;
    unsigned last = 0;
    for (std::size_t i = 0; i < keptCount_; ++i) {
      const auto& [index, value] = kept_[i];
      unsigned run = index - last - 1;
      for (; run > 15; run -= 16) putSymbol(pen, component_->acCodes, kSixteenZeros);
      putValue(pen, component_->acCodes, run, value);
      last = index;
    }
    if (last != 63) putSymbol(pen, component_->acCodes, kEndOfBlock);
    bits_.pen() = pen;
  }

  // Appends the entropy-coded data of all blocks. Its last byte is filled up with ones.
  void finish(Bytes& stream) {
    bits_.reserve(1);
    const auto open = static_cast<unsigned>(-bits_.bitCount() % 8);
    if (open != 0) bits_.put((1u << open) - 1, open);
    appendStuffed(stream, bits_.take());
  }

 private:
  // 64 coefficients, each with a code of 16 bits and a value of 11.
  static constexpr std::size_t kMostBlockBytes = 64 * 27 / 8 + 8;

  static constexpr unsigned kSixteenZeros = 0xF0;
  static constexpr unsigned kEndOfBlock = 0;

  struct Component {
    HuffmanEncoder dcCodes;
    HuffmanEncoder acCodes;
    std::array<Rescaling, 64> rescaling{};
    int lastDc = 0;
  };

  struct Coefficient {
    unsigned index = 0;
    int value = 0;
  };

  static void putSymbol(BitPen& pen, const HuffmanEncoder& codes, unsigned symbol) {
    const HuffmanEncoder::Code code = codes.code(symbol);
    pen.put(code.bits, code.length);
  }

  // A run of zeros and the value after it: a code for the run and the value's size, and the low
  // bits of the value, less 1 if it is negative (T.81 F.1.2.1).
  static void putValue(BitPen& pen, const HuffmanEncoder& codes, unsigned run, int value) {
    const auto size = static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(value))));
    const HuffmanEncoder::Code code = codes.code(run << 4 | size);
    const auto low = static_cast<std::uint32_t>(value - (value < 0 ? 1 : 0)) & ((1u << size) - 1);
    pen.put(std::uint32_t{code.bits} << size | low, code.length + size);
  }

  const JpegHeader& target_;
  std::vector<Component> components_;
  BitWriter bits_;
  Component* component_ = nullptr;  // of the block at hand
  int dc_ = 0;
  std::array<Coefficient, 64> kept_{};
  std::size_t keptCount_ = 0;
};

Bytes requantise(const Sources& sources, const JpegHeader& target, const Resolution& resolution) {
  Bytes stream = jfifHead(target, resolution);
  Requantiser requantiser(target);
  for (const JpegSource& source : sources) {
    requantiser.beginStream(source);
    JpegScan(source).walk(requantiser);
  }
  requantiser.finish(stream);
  return stream;
}

}  // namespace

std::optional<EncodedImage> transcodeJpeg(const EncodedImage& source, JpegFactors factors) {
  if (!isTranscodable(source)) return std::nullopt;
  const std::optional<Sources> sources = readSources(source);
  if (!sources) return std::nullopt;
  const JpegHeader target = targetOf(source, *sources, factors);
  const bool copied = keepsAllSteps(*sources, target) && canFollowEachOther(*sources);
  Bytes stream = copied ? copyVerified(*sources, target, source.resolution)
                        : requantise(*sources, target, source.resolution);
  appendMarker(stream, jpeg_marker::kEndOfImage);

  EncodedImage image;
  image.width = source.width;
  image.height = source.height;
  image.bitsPerSample = 8;
  image.samplesPerPixel = source.samplesPerPixel;
  image.photometric = source.photometric;
  image.compression = Compression::Jpeg;
  if (source.samplesPerPixel == 3) {
    const JpegComponent& luminance = target.components[0];
    image.chromaSubsampling = {luminance.horizontal, luminance.vertical};
  }
  image.rowsPerStrip = source.height;
  image.resolution = source.resolution;
  image.strips.push_back(std::move(stream));
  return image;
}

}  // namespace orvane
