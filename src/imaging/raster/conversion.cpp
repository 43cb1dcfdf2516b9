#include "imaging/raster/conversion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "foundation/Bytes.h"
#include "imaging/raster/Raster.h"

namespace orvane {
namespace {

/// Spreads rows of a raster to one byte a sample: shallow gray and colour samples to 0..255, 16-bit
/// samples by their high byte, palette indices as they are.
class RowToBytes {
 public:
  explicit RowToBytes(const Raster& raster);

  /// Spreads one row; `bytes` takes width x samplesPerPixel values.
  void spread(const std::uint8_t* row, std::uint8_t* bytes) const;

 private:
  using Spread = std::array<std::uint8_t, 8>;

  void spreadShallow(const std::uint8_t* row, std::uint8_t* bytes) const;

  std::size_t samples_;  ///< in a row
  unsigned bits_;
  std::array<Spread, 256> spreads_{};  ///< the shallow samples of each byte
};

RowToBytes::RowToBytes(const Raster& raster)
    : samples_(std::size_t{raster.width} * raster.samplesPerPixel), bits_(raster.bitsPerSample) {
  if (bits_ >= 8) return;
  const unsigned scale = raster.model == ColourModel::Palette ? 1 : 255 / ((1U << bits_) - 1);
  for (unsigned byte = 0; byte < spreads_.size(); ++byte) {
    const auto packed = static_cast<std::uint8_t>(byte);
    for (std::size_t i = 0; i < 8 / bits_; ++i) {
      spreads_[byte][i] = static_cast<std::uint8_t>(shallowSample(&packed, i, bits_) * scale);
    }
  }
}

void RowToBytes::spread(const std::uint8_t* row, std::uint8_t* bytes) const {
  if (bits_ == 8) {
    std::copy_n(row, samples_, bytes);
  } else if (bits_ == 16) {
    for (std::size_t i = 0; i < samples_; ++i) {
      std::uint16_t sample = 0;
      std::memcpy(&sample, row + 2 * i, sizeof sample);
      bytes[i] = static_cast<std::uint8_t>(sample >> 8);
    }
  } else {
    spreadShallow(row, bytes);
  }
}

void RowToBytes::spreadShallow(const std::uint8_t* row, std::uint8_t* bytes) const {
  const std::size_t inByte = 8 / bits_;
  std::size_t left = samples_;
  // All eight values are copied, the ones too many under the next; only the end needs care.
  for (; left >= 8; left -= inByte, bytes += inByte) {
    std::copy_n(spreads_[*row++].begin(), 8, bytes);
  }
  while (left > 0) {
    const std::size_t count = std::min(left, inByte);
    std::copy_n(spreads_[*row++].begin(), count, bytes);
    bytes += count;
    left -= count;
  }
}

/// Turns pixels of one byte a sample into 8-bit gray (MinIsBlack) or RGB, with alpha blended over
/// white.
class PixelColours {
 public:
  explicit PixelColours(const RasterForm& form);

  /// 1 for gray, 3 for RGB.
  std::uint16_t samples() const { return samples_; }

  /// Converts the pixels of one row.
  void convert(ByteView pixels, std::uint8_t* colours) const;

 private:
  using Colour = std::array<std::uint8_t, 3>;

  void readPalette(const RasterForm& form);
  void convertColours(ByteView pixels, std::uint8_t* colours) const;
  void blendOverWhite(ByteView pixels, std::uint8_t* colours) const;

  ColourModel model_;
  ExtraSample extraSample_;
  std::size_t step_;  ///< samples of a source pixel
  std::uint16_t samples_ = 1;
  std::array<Colour, 256> palette_{};
};

constexpr unsigned kWhite = 255;

std::uint8_t overWhite(std::uint8_t colour, std::uint8_t alpha, ExtraSample kind) {
  if (kind == ExtraSample::AssociatedAlpha) {
    return static_cast<std::uint8_t>(std::min(kWhite, colour + (kWhite - alpha)));
  }
  return static_cast<std::uint8_t>((colour * alpha + kWhite * (kWhite - alpha) + kWhite / 2) /
                                   kWhite);
}

/// Calls `toColour` for each pixel. `From` is the usual number of samples a pixel: known to the
/// compiler, it makes the loop tight; a pixel with an extra sample has a larger `step`.
template <std::size_t From, std::size_t To, typename ToColour>
void forEachPixel(ByteView pixels, std::size_t step, std::uint8_t* colours, ToColour toColour) {
  const std::uint8_t* pixel = pixels.data();
  const std::size_t count = pixels.size() / step;
  if (step == From) {
    for (std::size_t i = 0; i < count; ++i) toColour(pixel + i * From, colours + i * To);
  } else {
    for (std::size_t i = 0; i < count; ++i) toColour(pixel + i * step, colours + i * To);
  }
}

PixelColours::PixelColours(const RasterForm& form)
    : model_(form.model), extraSample_(form.extraSample), step_(form.samplesPerPixel) {
  if (model_ == ColourModel::Rgb || model_ == ColourModel::Cmyk) samples_ = 3;
  if (model_ == ColourModel::Palette) readPalette(form);
}

// An index without an entry is white.
void PixelColours::readPalette(const RasterForm& form) {
  const std::size_t entries = form.palette.size() / 3;
  palette_.fill({kWhite, kWhite, kWhite});
  for (std::size_t i = 0; i < std::min(entries, palette_.size()); ++i) {
    for (std::size_t part = 0; part < 3; ++part) {
      palette_[i][part] = static_cast<std::uint8_t>(form.palette[part * entries + i] >> 8);
    }
  }
  const bool grays = std::all_of(palette_.begin(), palette_.end(), [](const Colour& colour) {
    return colour[0] == colour[1] && colour[1] == colour[2];
  });
  if (!grays) samples_ = 3;
}

void PixelColours::convert(ByteView pixels, std::uint8_t* colours) const {
  convertColours(pixels, colours);
  if (extraSample_ == ExtraSample::AssociatedAlpha ||
      extraSample_ == ExtraSample::UnassociatedAlpha) {
    blendOverWhite(pixels, colours);
  }
}

void PixelColours::convertColours(ByteView pixels, std::uint8_t* colours) const {
  switch (model_) {
    case ColourModel::MinIsBlack:
      return forEachPixel<1, 1>(pixels, step_, colours, [](auto* from, auto* to) { *to = *from; });
    case ColourModel::MinIsWhite:
      return forEachPixel<1, 1>(pixels, step_, colours, [](auto* from, auto* to) {
        *to = static_cast<std::uint8_t>(kWhite - *from);
      });
    case ColourModel::Palette:
      if (samples_ == 1) {
        return forEachPixel<1, 1>(pixels, step_, colours,
                                  [this](auto* from, auto* to) { *to = palette_[*from][0]; });
      }
      return forEachPixel<1, 3>(pixels, step_, colours, [this](auto* from, auto* to) {
        std::copy_n(palette_[*from].begin(), 3, to);
      });
    case ColourModel::Rgb:
      return forEachPixel<3, 3>(pixels, step_, colours,
                                [](auto* from, auto* to) { std::copy_n(from, 3, to); });
    case ColourModel::Cmyk:
      return forEachPixel<4, 3>(pixels, step_, colours, [](auto* from, auto* to) {
        const unsigned light = kWhite - from[3];
        for (int i = 0; i < 3; ++i) {
          to[i] = static_cast<std::uint8_t>((kWhite - from[i]) * light / kWhite);
        }
      });
  }
}

void PixelColours::blendOverWhite(ByteView pixels, std::uint8_t* colours) const {
  for (std::size_t i = 0; i < pixels.size(); i += step_) {
    const std::uint8_t alpha = pixels[i + step_ - 1];
    for (std::size_t s = 0; s < samples_; ++s, ++colours) {
      *colours = overWhite(*colours, alpha, extraSample_);
    }
  }
}

bool isGray(const Raster& raster) {
  return raster.model == ColourModel::MinIsWhite || raster.model == ColourModel::MinIsBlack;
}

bool hasOnlyColourSamples(const Raster& raster) {
  return raster.extraSample == ExtraSample::None;
}

// The brighter entry is paper, also when both are dark or both are light.
bool secondEntryIsPaper(const Raster& raster) {
  return paletteBrightness(raster, 1) > paletteBrightness(raster, 0);
}

void invert(Raster& raster) {
  for (std::uint8_t& byte : raster.pixels) byte = static_cast<std::uint8_t>(~byte);
  clearPadding(raster);
}

Raster cutAtHalf(const Raster& raster) {
  Raster bilevel = emptyRaster(RasterForm{}, raster.width, raster.height);
  const std::size_t step = raster.samplesPerPixel;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    const std::uint8_t* from = raster.row(y);
    std::uint8_t* to = bilevel.row(y);
    for (std::uint32_t x = 0; x < raster.width; ++x, from += step) {
      const std::uint32_t level = step == 1 ? from[0] : brightness(from[0], from[1], from[2]);
      if (level < 128) to[x / 8] = static_cast<std::uint8_t>(to[x / 8] | 0x80U >> x % 8);
    }
  }
  return bilevel;
}

}  // namespace

Raster toBilevel(Raster raster) {
  if (raster.bitsPerPixel() > 1) return cutAtHalf(toGrayOrRgb8(std::move(raster)));
  if (raster.model == ColourModel::MinIsBlack ||
      (raster.model == ColourModel::Palette && secondEntryIsPaper(raster))) {
    invert(raster);
  }
  raster.model = ColourModel::MinIsWhite;
  raster.palette.clear();
  return raster;
}

Raster toGrayOrRgb8(Raster raster) {
  const bool plain = raster.bitsPerSample == 8 && hasOnlyColourSamples(raster);
  if (plain && (raster.model == ColourModel::MinIsBlack || raster.model == ColourModel::Rgb)) {
    return raster;
  }
  if (plain && raster.model == ColourModel::MinIsWhite) {
    invert(raster);
    raster.model = ColourModel::MinIsBlack;
    return raster;
  }
  const PixelColours colours(raster);
  RasterForm form;
  form.bitsPerSample = 8;
  form.samplesPerPixel = colours.samples();
  form.model = colours.samples() == 1 ? ColourModel::MinIsBlack : ColourModel::Rgb;
  requirePageMemory(raster.pixels.size() +
                    std::uint64_t{raster.width} * raster.height * colours.samples());
  Raster result = emptyRaster(form, raster.width, raster.height);
  const RowToBytes rowToBytes(raster);
  Bytes samples(std::size_t{raster.width} * raster.samplesPerPixel);
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    rowToBytes.spread(raster.row(y), samples.data());
    colours.convert(samples, result.row(y));
  }
  return result;
}

Raster toPdfForm(Raster raster) {
  const bool depthFits = raster.bitsPerSample <= 8;
  const bool modelFits = isGray(raster) || raster.model == ColourModel::Palette ||
                         (raster.model == ColourModel::Rgb && raster.bitsPerSample == 8);
  if (depthFits && modelFits && hasOnlyColourSamples(raster)) return raster;
  return toGrayOrRgb8(std::move(raster));
}

}  // namespace orvane
