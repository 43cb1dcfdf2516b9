#include "imaging/tiff/TiffLayout.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

namespace orvane {
namespace {

constexpr std::uint32_t kLongestSide = 1'000'000;

template <typename Value>
Value fieldOr(TIFF* tiff, ttag_t tag, Value otherwise) {
  Value value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

void readSize(const TiffHandle& tiff, TiffLayout& layout) {
  layout.width = fieldOr(tiff.get(), TIFFTAG_IMAGEWIDTH, std::uint32_t{0});
  layout.height = fieldOr(tiff.get(), TIFFTAG_IMAGELENGTH, std::uint32_t{0});
  const auto [shorter, longer] = std::minmax(layout.width, layout.height);
  if (shorter == 0 || longer > kLongestSide) {
    throw tiff.failure("no page has " + std::to_string(layout.width) + " x " +
                       std::to_string(layout.height) + " pixels");
  }
}

bool hasPredictor(std::uint16_t compression) {
  return compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE ||
         compression == COMPRESSION_DEFLATE || compression == COMPRESSION_LZMA ||
         compression == COMPRESSION_ZSTD;
}

void readCompression(const TiffHandle& tiff, TiffLayout& layout) {
  layout.compression = fieldOr(tiff.get(), TIFFTAG_COMPRESSION, std::uint16_t{COMPRESSION_NONE});
  if (TIFFIsCODECConfigured(layout.compression) == 0) {
    throw tiff.failure("compression " + std::to_string(layout.compression) +
                       " is not supported by the installed libtiff");
  }
  if (hasPredictor(layout.compression)) {
    layout.predictor = fieldOr(tiff.get(), TIFFTAG_PREDICTOR, std::uint16_t{PREDICTOR_NONE});
  }
}

// Signed samples pass as the bits they are, as in libtiff's RGBA reader: what a scanner labels so
// is light that it has measured from 0, which has no sign.
void requireWholeNumbers(const TiffHandle& tiff, const TiffLayout& layout) {
  const auto format = fieldOr(tiff.get(), TIFFTAG_SAMPLEFORMAT, std::uint16_t{SAMPLEFORMAT_UINT});
  const bool isWhole =
      format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_INT || format == SAMPLEFORMAT_VOID;
  if (layout.bitsPerSample > 1 && !isWhole && !layout.isSgiLog()) {
    throw tiff.failure("samples of format " + std::to_string(format) + " are not supported");
  }
}

void readSamples(const TiffHandle& tiff, TiffLayout& layout) {
  TIFF* const handle = tiff.get();
  layout.bitsPerSample = layout.isSgiLog()
                             ? std::uint16_t{8}
                             : fieldOr(handle, TIFFTAG_BITSPERSAMPLE, std::uint16_t{1});
  layout.samplesPerPixel = fieldOr(handle, TIFFTAG_SAMPLESPERPIXEL, std::uint16_t{1});
  const auto planes = fieldOr(handle, TIFFTAG_PLANARCONFIG, std::uint16_t{PLANARCONFIG_CONTIG});
  layout.separatePlanes = planes == PLANARCONFIG_SEPARATE;
  const auto orientation = fieldOr(handle, TIFFTAG_ORIENTATION, std::uint16_t{ORIENTATION_TOPLEFT});
  if (orientation >= ORIENTATION_TOPLEFT && orientation <= ORIENTATION_LEFTBOT) {
    layout.orientation = orientation;
  }
  requireWholeNumbers(tiff, layout);
  const bool isBilevel = layout.bitsPerSample == 1 && layout.samplesPerPixel == 1;
  if (!isBilevel && (layout.isFax() || layout.compression == COMPRESSION_JBIG)) {
    throw tiff.failure("fax compression of a page that is not 1-bit");
  }
}

bool isJpeg(std::uint16_t compression) {
  return compression == COMPRESSION_JPEG || compression == COMPRESSION_OJPEG;
}

std::uint16_t guessedPhotometric(TIFF* tiff, const TiffLayout& layout) {
  std::uint16_t* map[3] = {};
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &map[0], &map[1], &map[2]) == 1) {
    return PHOTOMETRIC_PALETTE;
  }
  if (layout.samplesPerPixel >= 3) {
    return isJpeg(layout.compression) ? PHOTOMETRIC_YCBCR : PHOTOMETRIC_RGB;
  }
  return layout.isFax() ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
}

std::uint16_t photometricOf(TIFF* tiff, const TiffLayout& layout) {
  std::uint16_t photometric = 0;
  if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric) == 1) return photometric;
  return guessedPhotometric(tiff, layout);
}

struct Colours {
  ColourModel model;
  std::uint16_t samples;
};

Colours coloursOf(const TiffHandle& tiff, std::uint16_t photometric) {
  switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
      return {ColourModel::MinIsWhite, 1};
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_LOGL:
      return {ColourModel::MinIsBlack, 1};
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_YCBCR:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_LOGLUV:
      return {ColourModel::Rgb, 3};
    case PHOTOMETRIC_PALETTE:
      return {ColourModel::Palette, 1};
    case PHOTOMETRIC_SEPARATED:
      return {ColourModel::Cmyk, 4};
    default:
      throw tiff.failure("photometric interpretation " + std::to_string(photometric) +
                         " is not supported");
  }
}

// Some writers put 8-bit values into the 16-bit map.
void spreadByteValues(std::vector<std::uint16_t>& palette) {
  const bool bytes =
      std::all_of(palette.begin(), palette.end(), [](std::uint16_t value) { return value < 256; });
  if (!bytes) return;
  for (std::uint16_t& value : palette) value = static_cast<std::uint16_t>(value * 257);
}

std::vector<std::uint16_t> readPalette(const TiffHandle& tiff, std::uint16_t bits) {
  std::uint16_t* parts[3] = {};
  if (bits > 8 ||
      TIFFGetField(tiff.get(), TIFFTAG_COLORMAP, &parts[0], &parts[1], &parts[2]) != 1) {
    throw tiff.failure("a palette page without a palette of its depth");
  }
  std::vector<std::uint16_t> palette;
  for (const std::uint16_t* part : parts) palette.insert(palette.end(), part, part + (1U << bits));
  spreadByteValues(palette);
  return palette;
}

void requireCmykInks(const TiffHandle& tiff) {
  std::uint16_t inkSet = INKSET_CMYK;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_INKSET, &inkSet);
  if (inkSet != INKSET_CMYK) throw tiff.failure("inks other than CMYK are not supported");
}

// The first extra sample is kept where a raster can hold it, all others go.
ExtraSample keptExtraSample(TIFF* tiff, const TiffLayout& layout, const Colours& colours) {
  const bool keeps = layout.samplesPerPixel > colours.samples && layout.bitsPerSample >= 8 &&
                     colours.model != ColourModel::Palette;
  if (!keeps) return ExtraSample::None;
  std::uint16_t count = 0;
  std::uint16_t* types = nullptr;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &types);
  if (count == 0 || types == nullptr) return ExtraSample::Unspecified;
  if (types[0] == EXTRASAMPLE_ASSOCALPHA) return ExtraSample::AssociatedAlpha;
  if (types[0] == EXTRASAMPLE_UNASSALPHA) return ExtraSample::UnassociatedAlpha;
  return ExtraSample::Unspecified;
}

bool needsRgbaReader(const TiffLayout& layout) {
  if (layout.compression == COMPRESSION_OJPEG) return layout.samplesPerPixel >= 3;
  if (layout.photometric != PHOTOMETRIC_YCBCR) return false;
  return layout.compression != COMPRESSION_JPEG || layout.separatePlanes;
}

void setRgbForm(TiffLayout& layout) {
  layout.form.bitsPerSample = 8;
  layout.form.samplesPerPixel = 3;
  layout.form.model = ColourModel::Rgb;
  layout.form.extraSample = ExtraSample::None;
}

// What the sample values mean: fills photometric, form and the way of decoding from the size and
// samples in `layout`.
void readColour(const TiffHandle& tiff, TiffLayout& layout) {
  const std::uint16_t bits = layout.bitsPerSample;
  if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16) {
    throw tiff.failure(std::to_string(bits) + " bits a sample are not supported");
  }
  layout.photometric = photometricOf(tiff.get(), layout);
  const Colours colours = coloursOf(tiff, layout.photometric);
  if (layout.samplesPerPixel < colours.samples) {
    throw tiff.failure("too few samples a pixel for photometric interpretation " +
                       std::to_string(layout.photometric));
  }
  layout.form.bitsPerSample = bits;
  layout.form.model = colours.model;
  layout.form.extraSample = keptExtraSample(tiff.get(), layout, colours);
  layout.form.samplesPerPixel = static_cast<std::uint16_t>(
      colours.samples + (layout.form.extraSample == ExtraSample::None ? 0 : 1));
  if (colours.model == ColourModel::Palette) layout.form.palette = readPalette(tiff, bits);
  if (colours.model == ColourModel::Cmyk) requireCmykInks(tiff);

  layout.throughRgbaReader = needsRgbaReader(layout);
  if (layout.isLogarithmic() && layout.samplesPerPixel != colours.samples) {
    throw tiff.failure("too many samples a pixel for photometric interpretation " +
                       std::to_string(layout.photometric));
  }
  if (layout.isLab() && bits < 8) {
    throw tiff.failure("Lab samples of " + std::to_string(bits) + " bits are not supported");
  }
  if (layout.throughRgbaReader || layout.isLab()) setRgbForm(layout);
}

void readBlocks(const TiffHandle& tiff, TiffLayout& layout) {
  TIFF* const handle = tiff.get();
  layout.tiled = TIFFIsTiled(handle) != 0;
  if (layout.tiled) {
    layout.blockWidth = fieldOr(handle, TIFFTAG_TILEWIDTH, std::uint32_t{0});
    layout.blockHeight = fieldOr(handle, TIFFTAG_TILELENGTH, std::uint32_t{0});
    layout.blockCount = TIFFNumberOfTiles(handle);
  } else {
    layout.blockWidth = layout.width;
    layout.blockHeight =
        std::min(layout.height, fieldOr(handle, TIFFTAG_ROWSPERSTRIP, layout.height));
    layout.blockCount = TIFFNumberOfStrips(handle);
  }
  const bool fits = layout.blockWidth > 0 && layout.blockHeight > 0 && layout.blockCount > 0 &&
                    layout.blockWidth <= kLongestSide && layout.blockHeight <= kLongestSide;
  if (!fits) throw tiff.failure("the size of its strips or tiles makes no sense");
  const std::uint64_t bitsAcross =
      std::uint64_t{layout.blockWidth} * layout.bitsPerSample * layout.samplesPerPixel;
  if (layout.tiled && (layout.blockWidth % 8 != 0 || bitsAcross % 8 != 0)) {
    throw tiff.failure("tiles of " + std::to_string(layout.blockWidth) + " pixels across");
  }
}

// Strips that overlap would let a small file keep the decoder busy for hours.
void readByteCounts(const TiffHandle& tiff, TiffLayout& layout) {
  constexpr std::uint64_t kAlwaysFine = 256U << 20;
  std::uint64_t total = 0;
  for (std::uint32_t i = 0; i < layout.blockCount; ++i) {
    const std::uint64_t count = std::min(TIFFGetStrileByteCount(tiff.get(), i), tiff.file().size());
    layout.encodedBytes = layout.isGroup4InStrips()
                              ? layout.encodedBytes + std::min(count, layout.mostGroup4Bytes())
                              : std::max(layout.encodedBytes, count);
    total += count;
  }
  layout.blocksOverlap = total > tiff.file().size();
  if (total > kAlwaysFine && total / 2 > tiff.file().size()) {
    throw tiff.failure("its strips or tiles are longer than the file");
  }
}

}  // namespace

TiffLayout readTiffLayout(const TiffHandle& tiff) {
  TiffLayout layout;
  readSize(tiff, layout);
  readCompression(tiff, layout);
  readSamples(tiff, layout);
  readColour(tiff, layout);
  readBlocks(tiff, layout);
  readByteCounts(tiff, layout);
  return layout;
}

RasterForm TiffLayout::sampleForm() const {
  if (!isLab()) return form;
  return {.bitsPerSample = bitsPerSample, .samplesPerPixel = 3, .model = ColourModel::Rgb};
}

namespace {

constexpr double kCentimetresPerInch = 2.54;
constexpr double kLowestDpi = 10;
constexpr double kHighestDpi = 20000;

double valueOf(TIFF* tiff, ttag_t tag) {
  float value = 0;
  return TIFFGetField(tiff, tag, &value) == 1 ? value : 0;
}

std::optional<double> credible(double dpi) {
  if (!(dpi >= kLowestDpi && dpi <= kHighestDpi)) return std::nullopt;  // a NaN as well
  return dpi;
}

// Without a unit the values tell only the shape of a pixel.
Resolution ofPixelShape(double x, double y) {
  const Resolution unstated;
  const double scale = unstated.x / std::max(x, y);
  if (x == y || !credible(scale * x) || !credible(scale * y)) return unstated;
  return {scale * x, scale * y, true};
}

}  // namespace

Resolution tiffResolution(TIFF* tiff) {
  std::uint16_t unit = RESUNIT_INCH;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  const double x = valueOf(tiff, TIFFTAG_XRESOLUTION);
  const double y = valueOf(tiff, TIFFTAG_YRESOLUTION);
  if (unit == RESUNIT_NONE) return ofPixelShape(x, y);
  if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return {};
  const double unitsPerInch = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
  const std::optional<double> dpiX = credible(x * unitsPerInch);
  const std::optional<double> dpiY = credible(y * unitsPerInch);
  if (!dpiX && !dpiY) return {};
  return {dpiX ? *dpiX : *dpiY, dpiY ? *dpiY : *dpiX, true};
}

}  // namespace orvane
