#include "imaging/codecs/write_jpeg_head.h"

#include "imaging/codecs/jpeg_density.h"
#include "imaging/codecs/jpeg_markers.h"

namespace orvane {
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
