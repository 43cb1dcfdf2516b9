#include "imaging/page/tiff_kinds.h"

#include <memory>
#include <stdexcept>

namespace orvane::test {
namespace {

using Handle = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

bool isFaxOrJpeg(const TiffKind& kind) {
  return (kind.compression >= COMPRESSION_CCITTRLE && kind.compression <= COMPRESSION_CCITTFAX4) ||
         kind.compression == COMPRESSION_JPEG;
}

// Runs and gradients for the compressions made for them, noise for the exact ones.
std::uint32_t sampleAt(const TiffKind& kind, std::uint32_t x, std::uint32_t y, std::uint32_t s) {
  if (kind.bits == 1 && isFaxOrJpeg(kind)) return (x / 5 + y / 3 + s) % 3 == 0 ? 0xFFFF : 0;
  if (isFaxOrJpeg(kind)) return (x * 900 + y * 500 + s * 9000) & 0xFFFF;
  std::uint32_t hash = (x * 73856093U) ^ (y * 19349663U) ^ ((s + 1) * 83492791U);
  hash = (hash ^ hash >> 13) * 0x5BD1E995U;
  return (hash ^ hash >> 15) & 0xFFFF;
}

std::vector<std::uint8_t> packedRow(const TiffKind& kind, std::uint32_t left, std::uint32_t width,
                                    std::uint32_t y, std::uint32_t firstSample) {
  const std::uint32_t samples = kind.separate ? 1 : kind.samples;
  std::vector<std::uint8_t> row((std::size_t{width} * samples * kind.bits + 7) / 8);
  for (std::uint32_t i = 0; i < width * samples; ++i) {
    const std::uint32_t s = firstSample + i % samples;
    const std::uint32_t value = sampleAt(kind, left + i / samples, y, s) >> (16 - kind.bits);
    if (kind.bits == 16) {
      reinterpret_cast<std::uint16_t*>(row.data())[i] = static_cast<std::uint16_t>(value);
    } else {
      const std::uint32_t bit = i * kind.bits;
      row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | value << (8 - kind.bits - bit % 8));
    }
  }
  return row;
}

void setPalette(TIFF* tiff, const TiffKind& kind) {
  std::vector<std::uint16_t> map[3];
  for (std::uint32_t part = 0; part < 3; ++part) {
    for (std::uint32_t i = 0; i < 1U << kind.bits; ++i) {
      map[part].push_back(static_cast<std::uint16_t>(((i + 1) * (91 + 40 * part) % 256) * 257));
    }
  }
  TIFFSetField(tiff, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
}

void setJpegColour(TIFF* tiff, const TiffKind& kind) {
  if (kind.compression == COMPRESSION_JPEG && kind.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
}

void setTags(TIFF* tiff, const TiffKind& kind) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kind.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kind.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
               kind.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, kind.orientation);
  TIFFSetField(tiff, TIFFTAG_FILLORDER, kind.fillOrder);
  if (kind.predictor != 0) TIFFSetField(tiff, TIFFTAG_PREDICTOR, kind.predictor);
  if (kind.g3Options != 0) TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, kind.g3Options);
  if (!kind.extras.empty()) {
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(kind.extras.size()),
                 kind.extras.data());
  }
  if (kind.photometric == PHOTOMETRIC_PALETTE) setPalette(tiff, kind);
  if (kind.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, kind.subsampling, kind.subsampling);
    float range[] = {0, 255, 128, 255, 128, 255};
    TIFFSetField(tiff, TIFFTAG_REFERENCEBLACKWHITE, range);
    setJpegColour(tiff, kind);
  }
  if (kind.rowsPerStrip > 0) {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kind.rowsPerStrip);
  } else {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
  }
}

void writeTiles(TIFF* tiff, const TiffKind& kind, std::uint32_t shift) {
  for (std::uint16_t plane = 0; plane < (kind.separate ? kind.samples : 1); ++plane) {
    for (std::uint32_t y = 0; y < kind.height; y += 16) {
      for (std::uint32_t x = 0; x < kind.width; x += 32) {
        std::vector<std::uint8_t> tile;
        for (std::uint32_t i = 0; i < 16; ++i) {
          const auto row = packedRow(kind, x, 32, y + i + shift, plane);
          tile.insert(tile.end(), row.begin(), row.end());
        }
        TIFFWriteTile(tiff, tile.data(), x, y, 0, plane);
      }
    }
  }
}

void writeSubsampledStrips(TIFF* tiff) {
  std::vector<std::uint8_t> strip(TIFFStripSize(tiff));
  for (std::size_t i = 0; i < strip.size(); ++i) {
    strip[i] = static_cast<std::uint8_t>(60 + i * 7 % 130);
  }
  for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff); ++i) {
    TIFFWriteEncodedStrip(tiff, i, strip.data(), static_cast<tmsize_t>(strip.size()));
  }
}

void writeRows(TIFF* tiff, const TiffKind& kind, std::uint32_t shift) {
  for (std::uint16_t plane = 0; plane < (kind.separate ? kind.samples : 1); ++plane) {
    for (std::uint32_t y = 0; y < kind.height; ++y) {
      auto row = packedRow(kind, 0, kind.width, y + shift, plane);
      TIFFWriteScanline(tiff, row.data(), y, plane);
    }
  }
}

void writeDirectoryFirst(TIFF* tiff, const TiffKind& kind) {
  TIFFDeferStrileArrayWriting(tiff);
  TIFFWriteCheck(tiff, kind.rowsPerStrip == 0, "writeTiff");
  TIFFWriteDirectory(tiff);
  TIFFSetDirectory(tiff, 0);
  TIFFForceStrileArrayWriting(tiff);
  if (kind.compression == COMPRESSION_JPEG) {  // no tables: they would move the directory
    TIFFSetField(tiff, TIFFTAG_JPEGTABLESMODE, 0);
    setJpegColour(tiff, kind);
  }
}

void append(std::string& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
}

}  // namespace

void writeTiff(const std::filesystem::path& file, const TiffKind& kind, int pages) {
  const Handle tiff(TIFFOpen(file.c_str(), kind.mode.c_str()), TIFFClose);
  if (!tiff) throw std::runtime_error("cannot write " + file.string());
  for (int page = 0; page < pages; ++page) {
    setTags(tiff.get(), kind);
    if (kind.directoryFirst) writeDirectoryFirst(tiff.get(), kind);
    const auto shift = static_cast<std::uint32_t>(100 * page);
    if (kind.rowsPerStrip == 0) {
      writeTiles(tiff.get(), kind, shift);
    } else if (kind.subsampling > 1 && kind.compression != COMPRESSION_JPEG) {
      writeSubsampledStrips(tiff.get());
    } else {
      writeRows(tiff.get(), kind, shift);
    }
    if (kind.directoryFirst) continue;
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

}  // namespace orvane::test
