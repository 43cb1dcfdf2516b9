#include "tiff_writing.h"

#include <array>
#include <memory>
#include <stdexcept>
#include <tiffio.h>

namespace orvane::sample {
namespace {

struct NamedKind {
  std::string_view name;
  PageKind kind;
};

constexpr std::array kKinds{
    NamedKind{"g4", PageKind::G4},
    NamedKind{"lzw1", PageKind::Lzw1},
    NamedKind{"packbits1", PageKind::PackBits1},
    NamedKind{"gray", PageKind::Gray},
    NamedKind{"gray-jpeg", PageKind::GrayJpeg},
    NamedKind{"colour-jpeg", PageKind::ColourJpeg},
    NamedKind{"colour-raw", PageKind::ColourRaw},
};

struct TiffClose {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffClose>;

int compressionOf(PageKind kind) {
  switch (kind) {
    case PageKind::G4:
      return COMPRESSION_CCITTFAX4;
    case PageKind::Lzw1:
      return COMPRESSION_LZW;
    case PageKind::PackBits1:
      return COMPRESSION_PACKBITS;
    case PageKind::GrayJpeg:
    case PageKind::ColourJpeg:
      return COMPRESSION_JPEG;
    case PageKind::Gray:
    case PageKind::ColourRaw:
      break;
  }
  return COMPRESSION_NONE;
}

int photometricOf(PageKind kind) {
  if (isBlackAndWhite(kind)) return PHOTOMETRIC_MINISWHITE;
  if (kind == PageKind::ColourJpeg) return PHOTOMETRIC_YCBCR;
  return isColour(kind) ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
}

void describe(TIFF* tiff, const QImage& scan, PageKind kind, int dpi, int jpegQuality) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(scan.width()));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(scan.height()));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, isBlackAndWhite(kind) ? 1 : 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, isColour(kind) ? 3 : 1);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compressionOf(kind));
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometricOf(kind));
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(dpi));
  TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(dpi));
  TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (compressionOf(kind) == COMPRESSION_JPEG) {
    TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, jpegQuality);
    if (isColour(kind)) TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
  // Scanners store Group 4 and colour JPEG pages in one strip, other kinds in short strips.
  const bool oneStrip = kind == PageKind::G4 || kind == PageKind::ColourJpeg;
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
               static_cast<std::uint32_t>(oneStrip ? scan.height() : 128));
}

}  // namespace

std::optional<PageKind> pageKindNamed(std::string_view name) {
  for (const NamedKind& entry : kKinds) {
    if (entry.name == name) return entry.kind;
  }
  return std::nullopt;
}

bool isBlackAndWhite(PageKind kind) {
  return kind == PageKind::G4 || kind == PageKind::Lzw1 || kind == PageKind::PackBits1;
}

bool isColour(PageKind kind) {
  return kind == PageKind::ColourJpeg || kind == PageKind::ColourRaw;
}

void writeTiff(const std::filesystem::path& file, const QImage& scan, PageKind kind, int dpi,
               int jpegQuality) {
  const TiffHandle tiff(TIFFOpen(file.c_str(), "wl"));
  if (!tiff) throw std::runtime_error("cannot write " + file.string());
  describe(tiff.get(), scan, kind, dpi, jpegQuality);
  QByteArray row(scan.bytesPerLine(), '\0');  // a copy, because codecs may change the row
  for (int y = 0; y < scan.height(); ++y) {
    std::copy_n(scan.constScanLine(y), row.size(), row.data());
    if (TIFFWriteScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(y)) < 0) {
      throw std::runtime_error("cannot write a row of " + file.string());
    }
  }
  if (TIFFFlush(tiff.get()) == 0) throw std::runtime_error("cannot complete " + file.string());
}

}  // namespace orvane::sample
