#include "imaging/tiff/tiff_kinds.h"

#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>

namespace orvane::test {
namespace {

// A page of JBIG is one strip.
std::uint32_t rowsPerStrip(const TiffKind& kind) {
  return kind.compression == COMPRESSION_JBIG ? kind.height : 11;
}

void setTags(TIFF* tiff, const TiffKind& kind) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kind.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kind.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip(kind));
  if (kind.compression == COMPRESSION_SGILOG || kind.compression == COMPRESSION_SGILOG24) {
    TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_16BIT);
  }
  if (kind.sampleFormat != SAMPLEFORMAT_UINT) {
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.sampleFormat);
  }
  if (!kind.extras.empty()) {
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(kind.extras.size()),
                 kind.extras.data());
  }
  if (kind.photometric == PHOTOMETRIC_PALETTE) {
    std::uint16_t colours[3][256];
    for (unsigned i = 0; i < 3 * 256; ++i) {
      colours[i / 256][i % 256] =
          static_cast<std::uint16_t>((i % 256 + 1) * (91 + i / 7) % 256 * 257);
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, colours[0], colours[1], colours[2]);
  }
}

// Edges, a gradient and noise, in bytes whatever the samples are.
std::vector<std::uint8_t> rowOf(std::size_t size, std::uint32_t y) {
  std::vector<std::uint8_t> row(size);
  for (std::uint32_t x = 0; x < size; ++x) {
    const std::uint32_t noise = (x * 73856093U ^ y * 19349663U) * 0x5BD1E995U >> 28;
    const bool edge = (x / 5 + y / 3) % 3 == 0;
    row[x] = static_cast<std::uint8_t>(edge ? 255 : 3 * x + 2 * y + noise);
  }
  return row;
}

void append(std::string& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
}

}  // namespace

void writeTiff(const std::filesystem::path& file, const TiffKind& kind, int pages) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(file.c_str(), "wl"), TIFFClose);
  if (!tiff) throw std::runtime_error("cannot write " + file.string());
  for (int page = 0; page < pages; ++page) {
    setTags(tiff.get(), kind);
    const auto size = static_cast<std::size_t>(TIFFScanlineSize(tiff.get()));
    std::vector<std::uint8_t> strip;
    for (std::uint32_t y = 0; y < kind.height; ++y) {
      const std::vector<std::uint8_t> row = rowOf(size, y + 100U * page);
      strip.insert(strip.end(), row.begin(), row.end());
      if ((y + 1) % rowsPerStrip(kind) != 0 && y + 1 < kind.height) continue;
      TIFFWriteEncodedStrip(tiff.get(), y / rowsPerStrip(kind), strip.data(), std::ssize(strip));
      strip.clear();
    }
    if (TIFFWriteDirectory(tiff.get()) != 1) throw std::runtime_error("libtiff: no directory");
  }
}

std::uint32_t directoryOf(const std::string& file) {
  std::uint32_t directory = 0;
  std::memcpy(&directory, &file[4], sizeof directory);
  return directory;
}

std::string rawGrayPage(std::uint32_t width, std::uint32_t height, const std::string& strip,
                        const std::vector<RawEntry>& changes, std::uint32_t next,
                        const std::string& front) {
  std::map<std::uint16_t, RawEntry> entries;
  for (const RawEntry& entry : {RawEntry{256, 4, 1, width},
                                {257, 4, 1, height},
                                {258, 3, 1, 8},
                                {259, 3, 1, 1},
                                {262, 3, 1, 1},
                                {273, 4, 1, 0},
                                {277, 3, 1, 1},
                                {278, 4, 1, height},
                                {279, 4, 1, 0}}) {
    entries.emplace(entry.tag, entry);
  }
  for (const RawEntry& change : changes) entries.insert_or_assign(change.tag, change);
  const auto dataOffset = static_cast<std::uint32_t>(front.size() + 2 + 12 * entries.size() + 4);
  std::string bytes = front;
  append(bytes, static_cast<std::uint32_t>(entries.size()), 2);
  for (auto [tag, entry] : entries) {
    const bool isSize = tag == TIFFTAG_STRIPBYTECOUNTS || tag == TIFFTAG_JPEGIFBYTECOUNT;
    const bool isPlace = tag == TIFFTAG_STRIPOFFSETS || tag == TIFFTAG_JPEGIFOFFSET;
    if (isPlace || isSize) entry.value = dataOffset;  // that of a table of sizes, too
    if (isSize && entry.count == 1) entry.value = static_cast<std::uint32_t>(strip.size());
    append(bytes, tag, 2);
    append(bytes, entry.type, 2);
    append(bytes, entry.count, 4);
    append(bytes, entry.value, 4);
  }
  append(bytes, next, 4);
  return bytes + strip;
}

std::string oldStyleJpegPage(std::uint32_t width, std::uint32_t height, const std::string& jpeg) {
  return rawGrayPage(width, height, jpeg,
                     {{259, 3, 1, 6},
                      {262, 3, 1, 6},
                      {277, 3, 1, 3},
                      {513, 4, 1, 0},
                      {514, 4, 1, 0},
                      {530, 3, 2, 0x10001}});
}

}  // namespace orvane::test
