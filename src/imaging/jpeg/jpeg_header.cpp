#include "imaging/jpeg/jpeg_header.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "foundation/Failure.h"

namespace orvane {
namespace {

using namespace jpeg_marker;

constexpr char kTooShort[] = "JPEG: a marker segment is too short";

// Takes the numbers of a marker segment one after the other.
class SegmentReader {
 public:
  explicit SegmentReader(ByteView bytes) : bytes_(bytes) {}

  std::size_t left() const { return bytes_.size(); }

  void requireEnd() const {
    if (left() != 0) throw Failure("JPEG: a marker segment is too long");
  }

  ByteView take(std::size_t count) {
    if (count > bytes_.size()) throw Failure(kTooShort);
    const ByteView taken = bytes_.first(count);
    bytes_ = bytes_.subspan(count);
    return taken;
  }

  std::uint8_t byte() { return take(1)[0]; }

  std::uint16_t number16() {
    const ByteView two = take(2);
    return static_cast<std::uint16_t>(two[0] << 8 | two[1]);
  }

 private:
  ByteView bytes_;
};

class HeaderReader {
 public:
  HeaderReader(ByteView stream, const JpegHeader& sharedTables)
      : stream_(stream), bytes_(stream), source_{sharedTables, false, {}} {}

  std::optional<JpegHeader> readTables() {
    requireStart();
    while (supported_) {
      const std::uint8_t marker = nextMarker();
      if (marker == kEndOfImage) return std::move(source_);
      readSegment(marker, nextSegment());
    }
    return std::nullopt;
  }

  std::optional<JpegSource> read() {
    requireStart();
    while (supported_) {
      const std::uint8_t marker = nextMarker();
      if (marker == kEndOfImage) throw Failure("JPEG: it ends before its image");
      SegmentReader segment = nextSegment();
      if (marker == kStartOfScan) return readScan(segment);
      readSegment(marker, segment);
    }
    return std::nullopt;
  }

 private:
  void requireStart() {
    if (SegmentReader(stream_).number16() != (0xFF00 | kStartOfImage)) {
      throw Failure("JPEG: it does not begin as a stream");
    }
  }

  std::uint8_t nextMarker() {
    const std::optional<std::uint8_t> marker = markers_.takeMarker();
    if (marker) return *marker;
    throw Failure(markers_.hasEnded() ? kTooShort : "JPEG: a marker is missing");
  }

  SegmentReader nextSegment() {
    const std::optional<JpegSegment> segment = markers_.takeSegment();
    if (!segment || markers_.position() > stream_.size()) throw Failure(kTooShort);
    return SegmentReader(stream_.subspan(segment->at, segment->length));
  }

  void readSegment(std::uint8_t marker, SegmentReader segment) {
    if (marker == kQuantisationTables) return readQuantisation(segment);
    if (marker == kHuffmanTables) return readHuffman(segment);
    if (marker == kFrameBaseline) return readFrame(segment);
    if (marker == kAdobe) return readAdobe(segment);
    if (marker == kRestartInterval) {
      source_.restartInterval = segment.number16();
      return segment.requireEnd();
    }
    const bool passedOver =
        (marker >= kApplication0 && marker < kApplication0 + 16) || marker == kComment;
    if (!passedOver) supported_ = false;
  }

  void readQuantisation(SegmentReader segment) {
    while (segment.left() != 0) {
      const std::uint8_t kind = segment.byte();
      if (kind > 3) {  // 16-bit entries, which baseline does not have, or no such table
        supported_ = false;
        return;
      }
      auto& [steps] = source_.quantisation[kind].emplace();
      std::ranges::copy(segment.take(steps.size()), steps.begin());
      if (std::ranges::count(steps, 0) != 0) throw Failure("JPEG: a quantisation step is 0");
    }
  }

  void readHuffman(SegmentReader segment) {
    while (segment.left() != 0) {
      const std::uint8_t kind = segment.byte();
      HuffmanTable table;
      std::ranges::copy(segment.take(table.counts.size()), table.counts.begin());
      const ByteView symbols = segment.take(table.codeCount());
      const bool isDc = kind < 0x10;
      const bool badSymbol =
          isDc && std::ranges::any_of(symbols, [](auto symbol) { return symbol > 15; });
      if ((kind & ~0x13) != 0 || badSymbol || !table.isPossible()) {
        throw Failure("JPEG: a Huffman table is impossible");
      }
      std::ranges::copy(symbols, table.symbols.begin());
      (isDc ? source_.dcTables : source_.acTables)[kind & 3] = table;
    }
  }

  void readFrame(SegmentReader segment) {
    if (!source_.components.empty()) throw Failure("JPEG: there are two frames");
    const std::uint8_t precision = segment.byte();
    source_.height = segment.number16();
    source_.width = segment.number16();
    const std::uint8_t count = segment.byte();
    if (source_.width == 0) throw Failure("JPEG: it has no columns");
    for (std::uint8_t i = 0; i < count; ++i) {
      JpegComponent& component = source_.components.emplace_back();
      component.id = segment.byte();
      const std::uint8_t sampling = segment.byte();
      component.horizontal = sampling >> 4;
      component.vertical = sampling & 15;
      component.quantisation = segment.byte();
      const auto isBad = [](unsigned factor) { return factor < 1 || factor > 4; };
      if (isBad(component.horizontal) || isBad(component.vertical)) {
        throw Failure("JPEG: a sampling factor is impossible");
      }
    }
    segment.requireEnd();
    supported_ = precision == 8 && source_.height != 0 && samplingIsUsual();
  }

  bool samplingIsUsual() const {
    const auto& components = source_.components;
    if (components.size() == 1) return true;
    if (components.size() != 3) return false;
    const auto isSingle = [](const JpegComponent& chroma) {
      return chroma.horizontal == 1 && chroma.vertical == 1;
    };
    const unsigned horizontal = components[0].horizontal;
    const unsigned vertical = components[0].vertical;
    return isSingle(components[1]) && isSingle(components[2]) && vertical <= horizontal &&
           horizontal <= 2;
  }

  void readAdobe(SegmentReader segment) {
    constexpr std::string_view kName = "Adobe";
    constexpr std::size_t kSize = 12;
    if (segment.left() < kSize) return;
    const ByteView bytes = segment.take(kSize);
    if (std::equal(kName.begin(), kName.end(), bytes.begin())) source_.adobeRgb = bytes[11] == 0;
  }

  std::optional<JpegSource> readScan(SegmentReader segment) {
    if (source_.components.empty()) throw Failure("JPEG: a scan comes before its frame");
    const std::uint8_t count = segment.byte();
    if (count != source_.components.size()) return std::nullopt;  // one of several scans
    for (JpegComponent& component : source_.components) {
      if (segment.byte() != component.id) throw Failure("JPEG: a scan names unknown components");
      const std::uint8_t tables = segment.byte();
      component.dcTable = tables >> 4;
      component.acTable = tables & 15;
      requireTables(component);
    }
    if (segment.byte() != 0 || segment.byte() != 63 || segment.byte() != 0) {
      throw Failure("JPEG: a scan does not hold all coefficients");
    }
    segment.requireEnd();
    source_.data = stream_.subspan(markers_.position());
    return std::move(source_);
  }

  void requireTables(const JpegComponent& component) const {
    const bool there = component.quantisation < 4 && component.dcTable < 4 &&
                       component.acTable < 4 && source_.quantisation[component.quantisation] &&
                       source_.dcTables[component.dcTable] && source_.acTables[component.acTable];
    if (!there) throw Failure("JPEG: a table is missing");
  }

  ByteView stream_;
  MemorySource bytes_;
  JpegMarkers markers_{bytes_, 2};  ///< after the start of the image
  JpegSource source_;
  bool supported_ = true;
};

void append16(Bytes& bytes, std::size_t number) {
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
  bytes.push_back(static_cast<std::uint8_t>(number));
}

void append(Bytes& bytes, ByteView more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void appendSegment(Bytes& stream, std::uint8_t marker, const Bytes& content) {
  appendMarker(stream, marker);
  append16(stream, content.size() + 2);
  append(stream, content);
}

Bytes jfif(const Resolution& resolution) {
  Bytes content = {'J', 'F', 'I', 'F', 0, 1, 1, 1};  // version 1.1, density in dots per inch
  append16(content, jfifDensity(resolution.x));
  append16(content, jfifDensity(resolution.y));
  append16(content, 0);  // no thumbnail
  return content;
}

Bytes frame(const JpegHeader& header) {
  Bytes content = {8};
  append16(content, header.height);
  append16(content, header.width);
  content.push_back(static_cast<std::uint8_t>(header.components.size()));
  for (const JpegComponent& component : header.components) {
    const auto sampling = component.horizontal << 4 | component.vertical;
    append(content,
           Bytes{component.id, static_cast<std::uint8_t>(sampling), component.quantisation});
  }
  return content;
}

Bytes scan(const JpegHeader& header) {
  Bytes content = {static_cast<std::uint8_t>(header.components.size())};
  for (const JpegComponent& component : header.components) {
    const auto tables = component.dcTable << 4 | component.acTable;
    append(content, Bytes{component.id, static_cast<std::uint8_t>(tables)});
  }
  append(content, Bytes{0, 63, 0});  // all coefficients in one scan
  return content;
}

using HuffmanTables = std::array<std::optional<HuffmanTable>, 4>;

void appendHuffmanTables(Bytes& stream, const HuffmanTables& tables, std::uint8_t kind) {
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (!tables[i]) continue;
    Bytes content = {static_cast<std::uint8_t>(kind + i)};
    append(content, tables[i]->counts);
    append(content, std::span(tables[i]->symbols).first(tables[i]->codeCount()));
    appendSegment(stream, kHuffmanTables, content);
  }
}

}  // namespace

std::optional<JpegHeader> readJpegTables(ByteView stream) {
  if (stream.empty()) return JpegHeader();
  return HeaderReader(stream, {}).readTables();
}

std::optional<JpegSource> readJpegHeader(ByteView stream, const JpegHeader& sharedTables) {
  return HeaderReader(stream, sharedTables).read();
}

std::uint16_t jfifDensity(double dotsPerInch) {
  if (!(dotsPerInch >= 1.0)) return 1;  // also for NaN
  return static_cast<std::uint16_t>(std::lround(std::min(dotsPerInch, 65535.0)));
}

Bytes jfifHead(const JpegHeader& header, const Resolution& resolution) {
  Bytes stream = {0xFF, kStartOfImage};
  appendSegment(stream, kApplication0, jfif(resolution));
  for (std::size_t i = 0; i < header.quantisation.size(); ++i) {
    if (!header.quantisation[i]) continue;
    Bytes content = {static_cast<std::uint8_t>(i)};
    append(content, header.quantisation[i]->steps);
    appendSegment(stream, kQuantisationTables, content);
  }
  appendSegment(stream, kFrameBaseline, frame(header));
  appendHuffmanTables(stream, header.dcTables, 0x00);
  appendHuffmanTables(stream, header.acTables, 0x10);
  if (header.restartInterval != 0) {
    Bytes content;
    append16(content, header.restartInterval);
    appendSegment(stream, kRestartInterval, content);
  }
  appendSegment(stream, kStartOfScan, scan(header));
  return stream;
}

void appendMarker(Bytes& stream, std::uint8_t marker) {
  stream.push_back(0xFF);
  stream.push_back(marker);
}

}  // namespace orvane
