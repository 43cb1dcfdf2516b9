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

constexpr std::uint32_t kMostSide = 65500;  // libjpeg's limit

bool isTranscodable(const StoredJpeg& page) {
  const bool gray = page.photometric == Photometric::MinIsBlack && page.samplesPerPixel == 1;
  const bool colour = page.photometric == Photometric::YCbCr && page.samplesPerPixel == 3;
  return page.isUprightInStrips && (gray || colour) && page.rowsPerStrip != 0 && page.width != 0 &&
         page.height != 0 && page.width <= kMostSide && page.height <= kMostSide &&
         page.streamCount == (page.height - 1) / page.rowsPerStrip + 1;
}

bool sameSampling(const JpegHeader& left, const JpegHeader& right) {
  return left.mcuWidth() == right.mcuWidth() && left.mcuHeight() == right.mcuHeight();
}

bool sameSteps(const JpegHeader& left, const JpegHeader& right) {
  for (std::size_t i = 0; i < left.components.size(); ++i) {
    if (left.quantisationOf(i) != right.quantisationOf(i)) return false;
  }
  return true;
}

bool sameHuffmanTables(const JpegHeader& left, const JpegHeader& right) {
  for (std::size_t i = 0; i < left.components.size(); ++i) {
    if (left.dcTableOf(i) != right.dcTableOf(i)) return false;
    if (left.acTableOf(i) != right.acTableOf(i)) return false;
  }
  return true;
}

/// The strips of a page that can be transcoded. The heads are read for each use, so that a page of
/// a million strips does not hold a million copies of their tables.
class Strips {
 public:
  Strips(const StoredJpeg& page, JpegHeader tables) : page_(page), tables_(std::move(tables)) {}

  std::uint32_t count() const { return page_.streamCount; }

  /// Strip `index`, which lives until the next call; nothing unless it holds exactly its part of
  /// the page, in whole MCUs unless it is the last.
  std::optional<JpegSource> read(std::uint32_t index) const {
    const ByteView stream = page_.stream(index);
    if (stream.empty()) return std::nullopt;
    std::optional<JpegSource> strip = readJpegHeader(stream, tables_);
    if (!strip || strip->adobeRgb) return std::nullopt;
    const std::uint32_t rows =
        std::min(page_.rowsPerStrip, page_.height - index * page_.rowsPerStrip);
    const bool fits = strip->width == page_.width && strip->height == rows &&
                      strip->components.size() == page_.samplesPerPixel &&
                      (index + 1 == count() || rows % strip->mcuHeight() == 0);
    return fits ? std::move(strip) : std::nullopt;
  }

 private:
  const StoredJpeg& page_;
  JpegHeader tables_;
};

/// What the strips have in common.
struct Survey {
  JpegHeader first;                        ///< the head of the first strip
  std::vector<ZigzagTable> coarsestSteps;  ///< of each component
  bool sameSteps = true;
  bool sameHuffmanTables = true;
  bool restarts = false;  ///< some strip has restart markers of its own
};

void addSteps(std::vector<ZigzagTable>& coarsest, const JpegHeader& strip) {
  for (std::size_t i = 0; i < coarsest.size(); ++i) {
    std::ranges::transform(coarsest[i].steps, strip.quantisationOf(i).steps,
                           coarsest[i].steps.begin(),
                           [](auto left, auto right) { return std::max(left, right); });
  }
}

// Nothing when a strip cannot be transcoded.
std::optional<Survey> surveyOf(const Strips& strips) {
  std::optional<Survey> survey;
  for (std::uint32_t i = 0; i < strips.count(); ++i) {
    const std::optional<JpegSource> strip = strips.read(i);
    if (!strip) return std::nullopt;
    if (!survey) {
      survey = Survey{.first = static_cast<const JpegHeader&>(*strip), .coarsestSteps = {}};
      survey->coarsestSteps.resize(strip->components.size());
    } else if (!sameSampling(survey->first, *strip)) {
      return std::nullopt;
    }
    addSteps(survey->coarsestSteps, *strip);
    survey->sameSteps = survey->sameSteps && sameSteps(survey->first, *strip);
    survey->sameHuffmanTables =
        survey->sameHuffmanTables && sameHuffmanTables(survey->first, *strip);
    survey->restarts = survey->restarts || strip->restartInterval != 0;
  }
  return survey;
}

// The head of the page's one stream, with the coarsest steps of the save and of all strips, and the
// default Huffman tables.
JpegHeader targetOf(const StoredJpeg& page, const Survey& survey, JpegFactors factors) {
  const SaveTables save = saveTables(factors);
  JpegHeader target;
  target.width = static_cast<std::uint16_t>(page.width);
  target.height = static_cast<std::uint16_t>(page.height);
  for (std::uint8_t i = 0; i < page.samplesPerPixel; ++i) {
    JpegComponent component = survey.first.components[i];
    component.id = static_cast<std::uint8_t>(i + 1);
    if (survey.first.isGray()) component.horizontal = component.vertical = 1;
    component.dcTable = component.acTable = i == 0 ? 0 : 1;
    ZigzagTable table = inZigzagOrder(i == 0 ? save.luminance : save.chrominance);
    std::ranges::transform(table.steps, survey.coarsestSteps[i].steps, table.steps.begin(),
                           [](auto left, auto right) { return std::max(left, right); });
    component.quantisation = 0;
    while (target.quantisation[component.quantisation].value_or(table) != table) {
      ++component.quantisation;
    }
    target.quantisation[component.quantisation] = table;
    target.components.push_back(component);
  }
  const auto& [luminance, chrominance] = defaultHuffmanTables();
  target.dcTables[0] = luminance.dc;
  target.acTables[0] = luminance.ac;
  if (page.samplesPerPixel == 3) {
    target.dcTables[1] = chrominance.dc;
    target.acTables[1] = chrominance.ac;
  }
  return target;
}

// True when the strips' data can follow each other in one stream, a restart marker between them.
bool canFollowEachOther(const Survey& survey, std::uint32_t count) {
  return count == 1 ||
         (survey.first.mcuCount() <= 0xFFFF && !survey.restarts && survey.sameHuffmanTables);
}

// The data of a strip, which lives as long as the strip. Throws Failure for damage.
ByteView verifiedData(const JpegSource& strip) {
  JpegScan scan(strip);
  scan.verify();
  return scan.walkedData();
}

// Calls `visit` with each strip. A file that was changed meanwhile is damaged.
template <typename Visit>
void forEachStrip(const Strips& strips, Visit visit) {
  for (std::uint32_t i = 0; i < strips.count(); ++i) {
    const std::optional<JpegSource> strip = strips.read(i);
    if (!strip) throw Failure("JPEG: a strip cannot be read again");
    visit(i, *strip);
  }
}

Bytes copyVerified(const Strips& strips, const JpegHeader& first, JpegHeader target,
                   const Resolution& resolution) {
  for (std::size_t i = 0; i < first.components.size(); ++i) {
    target.components[i].dcTable = first.components[i].dcTable;
    target.components[i].acTable = first.components[i].acTable;
  }
  target.dcTables = first.dcTables;
  target.acTables = first.acTables;
  target.restartInterval =
      strips.count() == 1 ? first.restartInterval : static_cast<std::uint16_t>(first.mcuCount());
  Bytes stream = jfifHead(target, resolution);
  forEachStrip(strips, [&](std::uint32_t i, const JpegSource& strip) {
    if (i != 0) {
      appendMarker(stream, static_cast<std::uint8_t>(jpeg_marker::kRestart0 + (i - 1) % 8));
    }
    const ByteView data = verifiedData(strip);
    stream.insert(stream.end(), data.begin(), data.end());
  });
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

Bytes requantise(const Strips& strips, const JpegHeader& target, const Resolution& resolution) {
  Bytes stream = jfifHead(target, resolution);
  Requantiser requantiser(target);
  forEachStrip(strips, [&](std::uint32_t, const JpegSource& strip) {
    requantiser.beginStream(strip);
    JpegScan(strip).walk(requantiser);
  });
  requantiser.finish(stream);
  return stream;
}

}  // namespace

std::optional<EncodedImage> transcodeJpeg(const StoredJpeg& page, JpegFactors factors) {
  if (!isTranscodable(page)) return std::nullopt;
  std::optional<JpegHeader> tables = readJpegTables(page.tables);
  if (!tables) return std::nullopt;
  const Strips strips(page, *std::move(tables));
  const std::optional<Survey> survey = surveyOf(strips);
  if (!survey) return std::nullopt;
  const JpegHeader target = targetOf(page, *survey, factors);
  const bool keepsAllSteps = survey->sameSteps && sameSteps(survey->first, target);
  const bool copied = keepsAllSteps && canFollowEachOther(*survey, strips.count());
  Bytes stream = copied ? copyVerified(strips, survey->first, target, page.resolution)
                        : requantise(strips, target, page.resolution);
  appendMarker(stream, jpeg_marker::kEndOfImage);

  EncodedImage image;
  image.width = page.width;
  image.height = page.height;
  image.bitsPerSample = 8;
  image.samplesPerPixel = page.samplesPerPixel;
  image.photometric = page.photometric;
  image.compression = Compression::Jpeg;
  if (page.samplesPerPixel == 3) {
    const JpegComponent& luminance = target.components[0];
    image.chromaSubsampling = {luminance.horizontal, luminance.vertical};
  }
  image.rowsPerStrip = page.height;
  image.resolution = page.resolution;
  image.strips.push_back(std::move(stream));
  return image;
}

void verifyJpeg(const StoredJpeg& page) {
  const std::optional<JpegHeader> tables = readJpegTables(page.tables);
  if (!tables) return;
  for (std::uint32_t i = 0; i < page.streamCount; ++i) {
    const ByteView stream = page.stream(i);
    if (stream.empty()) continue;
    if (const auto source = readJpegHeader(stream, *tables)) verifiedData(*source);
  }
}

}  // namespace orvane
