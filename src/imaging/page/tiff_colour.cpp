#include "imaging/page/tiff_colour.h"

#include <algorithm>
#include <string>

#include "imaging/page/tiff_rgba.h"

namespace orvane {
namespace {

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
  photometric = guessedPhotometric(tiff, layout);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);  // the decoders ask for it
  return photometric;
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

bool isLab(const TiffLayout& layout) {
  return layout.photometric == PHOTOMETRIC_CIELAB || layout.photometric == PHOTOMETRIC_ICCLAB;
}

// In the 8-bit form that the codec is set to, these are plain gray and RGB.
bool isLogarithmic(const TiffLayout& layout) {
  return layout.photometric == PHOTOMETRIC_LOGL || layout.photometric == PHOTOMETRIC_LOGLUV;
}

bool needsRgbaReader(const TiffLayout& layout) {
  if (isLab(layout)) return true;
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

}  // namespace

void readTiffColour(const TiffHandle& tiff, TiffLayout& layout) {
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
  layout.form.width = layout.width;
  layout.form.height = layout.height;
  layout.form.bitsPerSample = bits;
  layout.form.model = colours.model;
  layout.form.extraSample = keptExtraSample(tiff.get(), layout, colours);
  layout.form.samplesPerPixel = static_cast<std::uint16_t>(
      colours.samples + (layout.form.extraSample == ExtraSample::None ? 0 : 1));
  if (colours.model == ColourModel::Palette) layout.form.palette = readPalette(tiff, bits);
  if (colours.model == ColourModel::Cmyk) requireCmykInks(tiff);

  layout.throughRgbaReader = needsRgbaReader(layout);
  if (layout.throughRgbaReader || isLogarithmic(layout)) requireRgbaReader(tiff, layout);
  if (isLogarithmic(layout) && layout.samplesPerPixel != colours.samples) {
    throw tiff.failure("too many samples a pixel for photometric interpretation " +
                       std::to_string(layout.photometric));
  }
  if (layout.throughRgbaReader) {
    setRgbForm(layout);
  } else if (layout.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
}

}  // namespace orvane
