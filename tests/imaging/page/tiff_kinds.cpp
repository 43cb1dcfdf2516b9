#include "imaging/page/tiff_kinds.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace orvane::test {
namespace {

using Samples = std::vector<std::uint8_t>;

// Runs for fax codes, else a gradient with noise.
std::uint32_t sampleAt(const TiffKind& kind, std::uint32_t x, std::uint32_t y, std::uint32_t s) {
  if (kind.bits == 1) return (x / 5 + y / 3 + s) % 3 == 0 ? 1 : 0;
  const std::uint32_t noise = (x * 73856093U ^ y * 19349663U ^ s * 83492791U) * 0x5BD1E995U >> 19;
  return ((x * 700 + y * 500 + s * 9000 + noise) & 0xFFFF) >> (16 - kind.bits);
}

void addRow(Samples& samples, const TiffKind& kind, std::uint32_t left, std::uint32_t width,
            std::uint32_t y, std::uint32_t plane) {
  const std::uint32_t perPixel = kind.separate ? 1 : kind.samples;
  const std::size_t begin = samples.size();
  samples.resize(begin + (std::size_t{width} * perPixel * kind.bits + 7) / 8);
  std::uint8_t* row = samples.data() + begin;
  for (std::uint32_t i = 0; i < width * perPixel; ++i) {
    const std::uint32_t value = sampleAt(kind, left + i / perPixel, y, plane + i % perPixel);
    if (kind.bits == 16) {
      reinterpret_cast<std::uint16_t*>(row)[i] = static_cast<std::uint16_t>(value);
    } else {
      std::uint8_t& byte = row[i * kind.bits / 8];
      byte = static_cast<std::uint8_t>(byte | value << (8 - kind.bits - i * kind.bits % 8));
    }
  }
}

void setPalette(TIFF* tiff) {
  std::uint16_t map[3][256];
  for (std::uint32_t i = 0; i < 3 * 256; ++i) {
    const std::uint32_t part = i / 256;
    map[part][i % 256] = static_cast<std::uint16_t>((i % 256 + 1) * (91 + 40 * part) % 256 * 257);
  }
  TIFFSetField(tiff, TIFFTAG_COLORMAP, map[0], map[1], map[2]);
}

void setTags(TIFF* tiff, const TiffKind& kind) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kind.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kind.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, kind.separate ? 2 : 1);
  if (kind.predictor != 0) TIFFSetField(tiff, TIFFTAG_PREDICTOR, kind.predictor);
  if (kind.compression == COMPRESSION_JPEG) {
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
  if (!kind.extras.empty()) {
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(kind.extras.size()),
                 kind.extras.data());
  }
  if (kind.photometric == PHOTOMETRIC_PALETTE) setPalette(tiff);
  if (kind.rowsPerStrip > 0) {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kind.rowsPerStrip);
  } else {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
  }
}

// Strips and tiles alike: rectangles, plane by plane, row by row.
void writeBlocks(TIFF* tiff, const TiffKind& kind, std::uint32_t shift) {
  const bool tiled = kind.rowsPerStrip == 0;
  const std::uint32_t width = tiled ? 32 : kind.width;
  std::uint32_t index = 0;
  for (std::uint32_t plane = 0; plane < (kind.separate ? kind.samples : 1U); ++plane) {
    for (std::uint32_t y = 0; y < kind.height; y += tiled ? 16 : kind.rowsPerStrip) {
      const std::uint32_t rows = tiled ? 16 : std::min(kind.rowsPerStrip, kind.height - y);
      for (std::uint32_t x = 0; x < kind.width; x += width) {
        Samples block;
        for (std::uint32_t i = 0; i < rows; ++i)
          addRow(block, kind, x, width, y + i + shift, plane);
        // YCbCr lies in units of a few pixels; what they are does not matter.
        if (!tiled) block.resize(std::max<std::size_t>(block.size(), TIFFVStripSize(tiff, rows)));
        const auto size = static_cast<tmsize_t>(block.size());
        const tmsize_t done = tiled ? TIFFWriteEncodedTile(tiff, index++, block.data(), size)
                                    : TIFFWriteEncodedStrip(tiff, index++, block.data(), size);
        if (done < 0) throw std::runtime_error("libtiff writes no strip");
      }
    }
  }
}

void append(std::string& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
}

}  // namespace

void writeTiff(const std::filesystem::path& file, const TiffKind& kind, int pages) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(file.c_str(), kind.mode.c_str()),
                                                         TIFFClose);
  if (!tiff) throw std::runtime_error("cannot write " + file.string());
  for (int page = 0; page < pages; ++page) {
    setTags(tiff.get(), kind);
    writeBlocks(tiff.get(), kind, static_cast<std::uint32_t>(100 * page));
    if (TIFFWriteDirectory(tiff.get()) != 1) throw std::runtime_error("libtiff: no directory");
  }
}

std::string rawTiff(const std::vector<RawEntry>& entries, std::uint32_t next,
                    const std::string& data) {
  std::string bytes("II*\0\x08\0\0\0", 8);
  append(bytes, static_cast<std::uint32_t>(entries.size()), 2);
  for (const RawEntry& entry : entries) {
    append(bytes, entry.tag, 2);
    append(bytes, entry.type, 2);
    append(bytes, entry.count, 4);
    append(bytes, entry.value, 4);
  }
  append(bytes, next, 4);
  return bytes + data;
}

std::uint32_t rawDataOffset(const std::vector<RawEntry>& entries) {
  return static_cast<std::uint32_t>(8 + 2 + 12 * entries.size() + 4);
}

std::string rawGrayPage(std::uint32_t width, std::uint32_t height, const std::string& strip,
                        const std::vector<RawEntry>& changes, std::uint32_t next) {
  std::vector<RawEntry> entries = {{256, 4, 1, width}, {257, 4, 1, height}, {258, 3, 1, 8},
                                   {259, 3, 1, 1},     {262, 3, 1, 1},      {273, 4, 1, 0},
                                   {277, 3, 1, 1},     {278, 4, 1, height}, {279, 4, 1, 0}};
  for (const RawEntry& change : changes) {
    const auto same = [&](const RawEntry& entry) { return entry.tag == change.tag; };
    std::erase_if(entries, same);
    const auto later = [&](const RawEntry& entry) { return entry.tag > change.tag; };
    entries.insert(std::find_if(entries.begin(), entries.end(), later), change);
  }
  for (RawEntry& entry : entries) {
    if (entry.tag == TIFFTAG_STRIPOFFSETS || entry.tag == TIFFTAG_JPEGIFOFFSET) {
      entry.value = rawDataOffset(entries);
    } else if (entry.tag == TIFFTAG_STRIPBYTECOUNTS || entry.tag == TIFFTAG_JPEGIFBYTECOUNT) {
      const bool isTable = entry.count > 1;  // it may share the data with that of the offsets
      entry.value = isTable ? rawDataOffset(entries) : static_cast<std::uint32_t>(strip.size());
    }
  }
  return rawTiff(entries, next, strip);
}

}  // namespace orvane::test
