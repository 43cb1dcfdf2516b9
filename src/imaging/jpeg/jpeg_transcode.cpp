#include "imaging/jpeg/jpeg_transcode.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "imaging/jpeg/JpegRequantiser.h"
#include "imaging/jpeg/jpeg_header.h"
#include "imaging/jpeg/jpeg_scan.h"

namespace orvane {
namespace {

using Headers = std::vector<JpegHeader>;

constexpr std::uint32_t kMostSide = 65500;  // libjpeg's limit

bool isTranscodable(const EncodedImage& source) {
  const bool gray = source.photometric == Photometric::MinIsBlack && source.samplesPerPixel == 1;
  const bool colour = source.photometric == Photometric::YCbCr && source.samplesPerPixel == 3;
  return source.compression == Compression::Jpeg && (gray || colour) && source.bitsPerSample == 8 &&
         source.rowsPerStrip != 0 && source.width != 0 && source.height != 0 &&
         source.width <= kMostSide && source.height <= kMostSide &&
         source.strips.size() == (source.height - 1) / source.rowsPerStrip + 1;
}

bool sameSampling(const JpegHeader& left, const JpegHeader& right) {
  return left.mcuWidth() == right.mcuWidth() && left.mcuHeight() == right.mcuHeight();
}

// True when strip `index` holds just its part of the page, in whole MCUs unless it is the last.
bool fits(const EncodedImage& source, std::size_t index, const JpegHeader& header) {
  const auto before = static_cast<std::uint32_t>(index) * source.rowsPerStrip;
  const std::uint32_t rows = std::min(source.rowsPerStrip, source.height - before);
  const bool last = index + 1 == source.strips.size();
  return header.width == source.width && header.height == rows && !header.adobeRgb &&
         header.components.size() == source.samplesPerPixel &&
         (last || rows % header.mcuHeight() == 0);
}

// The heads of all strips, nothing when one cannot be transcoded.
std::optional<Headers> readHeaders(const EncodedImage& source) {
  Headers headers;
  for (std::size_t i = 0; i < source.strips.size(); ++i) {
    std::optional<JpegHeader> header = readJpegHeader(source.strips[i]);
    if (!header || !fits(source, i, *header)) return std::nullopt;
    if (i != 0 && !sameSampling(headers[0], *header)) return std::nullopt;
    headers.push_back(*std::move(header));
  }
  return headers;
}

// Component `component`'s steps: the largest of those of the save and of all strips.
QuantisationTable coarsest(const Headers& headers, std::size_t component, JpegFactors factors) {
  const JpegTables save = quantisationTables(factors);
  const QuantisationTable& natural = component == 0 ? save.luminance : save.chrominance;
  QuantisationTable table;
  for (std::size_t k = 0; k < table.size(); ++k) {
    table[k] = natural[kZigzag[k]];
    for (const JpegHeader& header : headers) {
      table[k] = std::max(table[k], header.quantisationOf(header.components[component])[k]);
    }
  }
  return table;
}

// The head of the page's one stream, with the coarsest steps and the Huffman tables of Annex K.
JpegHeader targetHeader(const EncodedImage& source, const Headers& headers, JpegFactors factors) {
  JpegHeader target;
  target.width = static_cast<std::uint16_t>(source.width);
  target.height = static_cast<std::uint16_t>(source.height);
  for (std::uint8_t i = 0; i < source.samplesPerPixel; ++i) {
    JpegComponent component = headers[0].components[i];
    component.id = static_cast<std::uint8_t>(i + 1);
    if (headers[0].isGray()) component.horizontal = component.vertical = 1;
    component.dcTable = component.acTable = i == 0 ? 0 : 1;
    const QuantisationTable table = coarsest(headers, i, factors);
    component.quantisation = 0;
    while (target.quantisation[component.quantisation].value_or(table) != table) {
      ++component.quantisation;
    }
    target.quantisation[component.quantisation] = table;
    target.components.push_back(component);
  }
  target.dcTables[0] = kAnnexKDcLuminance;
  target.acTables[0] = kAnnexKAcLuminance;
  if (source.samplesPerPixel == 3) {
    target.dcTables[1] = kAnnexKDcChrominance;
    target.acTables[1] = kAnnexKAcChrominance;
  }
  return target;
}

bool keepsAllSteps(const Headers& headers, const JpegHeader& target) {
  return std::ranges::all_of(headers, [&target](const JpegHeader& header) {
    for (std::size_t i = 0; i < header.components.size(); ++i) {
      if (header.quantisationOf(header.components[i]) !=
          target.quantisationOf(target.components[i])) {
        return false;
      }
    }
    return true;
  });
}

bool sameHuffmanTables(const JpegHeader& left, const JpegHeader& right) {
  for (std::size_t i = 0; i < left.components.size(); ++i) {
    const JpegComponent& l = left.components[i];
    const JpegComponent& r = right.components[i];
    if (*left.dcTables[l.dcTable] != *right.dcTables[r.dcTable]) return false;
    if (*left.acTables[l.acTable] != *right.acTables[r.acTable]) return false;
  }
  return true;
}

// True when the strips' data can follow each other in one stream, a restart marker between them.
bool canFollowEachOther(const Headers& headers) {
  if (headers.size() == 1) return true;
  const JpegHeader& first = headers[0];
  return first.mcusPerRow() * first.mcuRows() <= 0xFFFF &&
         std::ranges::all_of(headers, [&first](const JpegHeader& header) {
           return header.restartInterval == 0 && sameHuffmanTables(header, first);
         });
}

// Verifying is walking without a use for what is found.
struct NoSink {
  void dc(std::size_t, int) {}
  void ac(unsigned, int) {}
  void endBlock() {}
};

void appendMarker(Bytes& stream, std::uint8_t marker) {
  stream.push_back(0xFF);
  stream.push_back(marker);
}

Bytes copyVerified(const Headers& headers, JpegHeader target, const Resolution& resolution) {
  const JpegHeader& first = headers[0];
  for (std::size_t i = 0; i < first.components.size(); ++i) {
    target.components[i].dcTable = first.components[i].dcTable;
    target.components[i].acTable = first.components[i].acTable;
  }
  target.dcTables = first.dcTables;
  target.acTables = first.acTables;
  target.restartInterval = first.restartInterval;
  if (headers.size() > 1) {
    target.restartInterval = static_cast<std::uint16_t>(first.mcusPerRow() * first.mcuRows());
  }
  Bytes stream = jpegHead(target, resolution);
  for (std::size_t i = 0; i < headers.size(); ++i) {
    if (i != 0)
      appendMarker(stream, static_cast<std::uint8_t>(jpeg_marker::kRestart0 + (i - 1) % 8));
    JpegScan scan(headers[i]);
    NoSink sink;
    scan.walk(sink);
    const ByteView data = scan.walkedData();
    stream.insert(stream.end(), data.begin(), data.end());
  }
  return stream;
}

Bytes requantise(const Headers& headers, const JpegHeader& target, const Resolution& resolution) {
  Bytes stream = jpegHead(target, resolution);
  JpegRequantiser requantiser(target);
  for (const JpegHeader& header : headers) {
    requantiser.beginStream(header);
    JpegScan(header).walk(requantiser);
  }
  requantiser.finish(stream);
  return stream;
}

}  // namespace

std::optional<EncodedImage> transcodeJpeg(const EncodedImage& source, JpegFactors factors) {
  if (!isTranscodable(source)) return std::nullopt;
  const std::optional<Headers> headers = readHeaders(source);
  if (!headers) return std::nullopt;
  const JpegHeader target = targetHeader(source, *headers, factors);
  const bool copied = keepsAllSteps(*headers, target) && canFollowEachOther(*headers);
  Bytes stream = copied ? copyVerified(*headers, target, source.resolution)
                        : requantise(*headers, target, source.resolution);
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
