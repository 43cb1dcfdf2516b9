#include "imaging/jpeg/jpeg_header.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "foundation/Failure.h"

namespace orvane {

const QuantisationTable kAnnexKLuminance = {16, 11, 10, 16, 24,  40,  51,  61,   //
                                            12, 12, 14, 19, 26,  58,  60,  55,   //
                                            14, 13, 16, 24, 40,  57,  69,  56,   //
                                            14, 17, 22, 29, 51,  87,  80,  62,   //
                                            18, 22, 37, 56, 68,  109, 103, 77,   //
                                            24, 35, 55, 64, 81,  104, 113, 92,   //
                                            49, 64, 78, 87, 103, 121, 120, 101,  //
                                            72, 92, 95, 98, 112, 100, 103, 99};

const QuantisationTable kAnnexKChrominance = {17, 18, 24, 47, 99, 99, 99, 99,  //
                                              18, 21, 26, 66, 99, 99, 99, 99,  //
                                              24, 26, 56, 99, 99, 99, 99, 99,  //
                                              47, 66, 99, 99, 99, 99, 99, 99,  //
                                              99, 99, 99, 99, 99, 99, 99, 99,  //
                                              99, 99, 99, 99, 99, 99, 99, 99,  //
                                              99, 99, 99, 99, 99, 99, 99, 99,  //
                                              99, 99, 99, 99, 99, 99, 99, 99};

const std::array<std::uint8_t, 64> kZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,   //
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,  //
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,  //
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

namespace {

QuantisationTable scaled(const QuantisationTable& table, int percent) {
  QuantisationTable result;
  std::transform(table.begin(), table.end(), result.begin(), [percent](int entry) {
    return static_cast<std::uint16_t>(std::clamp((entry * percent + 50) / 100, 1, 255));
  });
  return result;
}

}  // namespace

int quantisationPercent(int quality) {
  quality = std::clamp(quality, 1, 100);
  return quality < 50 ? 5000 / quality : 200 - 2 * quality;
}

JpegTables quantisationTables(JpegFactors factors) {
  return {scaled(kAnnexKLuminance, quantisationPercent(100 - factors.major)),
          scaled(kAnnexKChrominance, quantisationPercent(100 - factors.minor))};
}

namespace {

using namespace jpeg_marker;

// Takes the numbers of a marker segment one after the other.
class SegmentReader {
 public:
  explicit SegmentReader(ByteView bytes) : bytes_(bytes) {}

  std::size_t left() const { return bytes_.size(); }

  ByteView take(std::size_t count) {
    if (count > bytes_.size()) throw Failure("JPEG: a marker segment is too short");
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
  explicit HeaderReader(ByteView stream) : stream_(stream) {}

  std::optional<JpegHeader> read() {
    if (stream_.number16() != (0xFF00 | kStartOfImage)) {
      throw Failure("JPEG: it does not begin as a stream");
    }
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
  std::uint8_t nextMarker() {
    if (stream_.byte() != 0xFF) throw Failure("JPEG: a marker is missing");
    std::uint8_t marker = 0xFF;
    while (marker == 0xFF) marker = stream_.byte();
    return marker;
  }

  SegmentReader nextSegment() {
    const std::uint16_t length = stream_.number16();
    if (length < 2) throw Failure("JPEG: a marker segment is too short");
    return SegmentReader(stream_.take(length - 2u));
  }

  void readSegment(std::uint8_t marker, SegmentReader segment) {
    if (marker == kQuantisationTables) return readQuantisation(segment);
    if (marker == kHuffmanTables) return readHuffman(segment);
    if (marker == kFrameBaseline) return readFrame(segment);
    if (marker == kAdobe) return readAdobe(segment);
    if (marker == kRestartInterval) {
      header_.restartInterval = segment.number16();
      return;
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
      QuantisationTable& table = header_.quantisation[kind].emplace();
      std::ranges::copy(segment.take(table.size()), table.begin());
      if (std::ranges::count(table, 0) != 0) throw Failure("JPEG: a quantisation step is 0");
    }
  }

  void readHuffman(SegmentReader segment) {
    while (segment.left() != 0) {
      const std::uint8_t kind = segment.byte();
      HuffmanTable table;
      std::ranges::copy(segment.take(table.counts.size()), table.counts.begin());
      const unsigned total = std::accumulate(table.counts.begin(), table.counts.end(), 0u);
      const ByteView symbols = segment.take(total);
      table.symbols.assign(symbols.begin(), symbols.end());
      const bool dc = kind < 0x10;
      const bool badSymbol =
          dc && std::ranges::any_of(table.symbols, [](auto symbol) { return symbol > 15; });
      if (total > 256 || (kind & ~0x13) != 0 || badSymbol || !isPossible(table)) {
        throw Failure("JPEG: a Huffman table is impossible");
      }
      auto& tables = dc ? header_.dcTables : header_.acTables;
      tables[kind & 3] = std::move(table);
    }
  }

  void readFrame(SegmentReader segment) {
    if (!header_.components.empty()) throw Failure("JPEG: there are two frames");
    const std::uint8_t precision = segment.byte();
    header_.height = segment.number16();
    header_.width = segment.number16();
    const std::uint8_t count = segment.byte();
    if (header_.width == 0) throw Failure("JPEG: it has no columns");
    for (std::uint8_t i = 0; i < count; ++i) {
      JpegComponent& component = header_.components.emplace_back();
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
    supported_ = precision == 8 && header_.height != 0 && samplingIsUsual();
  }

  bool samplingIsUsual() const {
    const auto& components = header_.components;
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
    if (std::equal(kName.begin(), kName.end(), bytes.begin())) header_.adobeRgb = bytes[11] == 0;
  }

  std::optional<JpegHeader> readScan(SegmentReader segment) {
    if (header_.components.empty()) throw Failure("JPEG: a scan comes before its frame");
    const std::uint8_t count = segment.byte();
    if (count != header_.components.size()) return std::nullopt;  // one of several scans
    for (JpegComponent& component : header_.components) {
      if (segment.byte() != component.id) throw Failure("JPEG: a scan names unknown components");
      const std::uint8_t tables = segment.byte();
      component.dcTable = tables >> 4;
      component.acTable = tables & 15;
      requireTables(component);
    }
    if (segment.byte() != 0 || segment.byte() != 63 || segment.byte() != 0) {
      throw Failure("JPEG: a scan does not hold all coefficients");
    }
    header_.data = stream_.take(stream_.left());
    return std::move(header_);
  }

  void requireTables(const JpegComponent& component) const {
    const bool there = component.quantisation < 4 && component.dcTable < 4 &&
                       component.acTable < 4 && header_.quantisation[component.quantisation] &&
                       header_.dcTables[component.dcTable] && header_.acTables[component.acTable];
    if (!there) throw Failure("JPEG: a table is missing");
  }

  SegmentReader stream_;
  JpegHeader header_;
  bool supported_ = true;
};

}  // namespace

std::optional<JpegHeader> readJpegHeader(ByteView stream) {
  return HeaderReader(stream).read();
}

namespace {

using namespace jpeg_marker;

void append16(Bytes& bytes, std::size_t number) {
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
  bytes.push_back(static_cast<std::uint8_t>(number));
}

void append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void appendSegment(Bytes& stream, std::uint8_t marker, const Bytes& content) {
  stream.push_back(0xFF);
  stream.push_back(marker);
  append16(stream, content.size() + 2);
  append(stream, content);
}

Bytes jfif(const Resolution& resolution) {
  Bytes content = {'J', 'F', 'I', 'F', 0, 1, 1, 1};  // version 1.1, density in dots per inch
  append16(content, jfifDensity(resolution.x));
  append16(content, jfifDensity(resolution.y));
  append(content, {0, 0});  // no thumbnail
  return content;
}

Bytes frame(const JpegHeader& header) {
  Bytes content = {8};
  append16(content, header.height);
  append16(content, header.width);
  content.push_back(static_cast<std::uint8_t>(header.components.size()));
  for (const JpegComponent& component : header.components) {
    const auto sampling = component.horizontal << 4 | component.vertical;
    append(content, {component.id, static_cast<std::uint8_t>(sampling), component.quantisation});
  }
  return content;
}

Bytes scan(const JpegHeader& header) {
  Bytes content = {static_cast<std::uint8_t>(header.components.size())};
  for (const JpegComponent& component : header.components) {
    const auto tables = component.dcTable << 4 | component.acTable;
    append(content, {component.id, static_cast<std::uint8_t>(tables)});
  }
  append(content, {0, 63, 0});  // all coefficients, in one go
  return content;
}

using HuffmanTables = std::array<std::optional<HuffmanTable>, 4>;

void appendHuffmanTables(Bytes& stream, const HuffmanTables& tables, std::uint8_t kind) {
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (!tables[i]) continue;
    Bytes content = {static_cast<std::uint8_t>(kind + i)};
    content.insert(content.end(), tables[i]->counts.begin(), tables[i]->counts.end());
    append(content, tables[i]->symbols);
    appendSegment(stream, kHuffmanTables, content);
  }
}

}  // namespace

Bytes jpegHead(const JpegHeader& header, const Resolution& resolution) {
  Bytes stream = {0xFF, kStartOfImage};
  appendSegment(stream, kApplication0, jfif(resolution));
  for (std::size_t i = 0; i < header.quantisation.size(); ++i) {
    if (!header.quantisation[i]) continue;
    Bytes content = {static_cast<std::uint8_t>(i)};
    for (const std::uint16_t entry : *header.quantisation[i]) {
      content.push_back(static_cast<std::uint8_t>(entry));
    }
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

}  // namespace orvane
