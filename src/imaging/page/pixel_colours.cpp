#include "imaging/page/pixel_colours.h"

#include <algorithm>

namespace orvane {
namespace {

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

}  // namespace

PixelColours::PixelColours(const Raster& form)
    : model_(form.model), extraSample_(form.extraSample), step_(form.samplesPerPixel) {
  if (model_ == ColourModel::Rgb || model_ == ColourModel::Cmyk) samples_ = 3;
  if (model_ == ColourModel::Palette) readPalette(form);
}

// An index without an entry is white.
void PixelColours::readPalette(const Raster& form) {
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

}  // namespace orvane
