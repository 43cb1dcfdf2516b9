#include "imaging/raster/Raster.h"

#include <algorithm>

#include "foundation/Failure.h"

namespace orvane {
namespace {

std::uint8_t brightestEntry(const RasterForm& form) {
  const std::size_t entries = form.palette.size() / 3;
  std::size_t brightest = 0;
  for (std::size_t i = 1; i < entries; ++i) {
    if (paletteBrightness(form, i) > paletteBrightness(form, brightest)) brightest = i;
  }
  return static_cast<std::uint8_t>(brightest);
}

}  // namespace

void requirePageMemory(std::uint64_t bytes) {
  if (bytes > kMaxPageBytes) throw Failure("the page would need more than 1 GiB of memory");
}

Raster emptyRaster(const RasterForm& form, std::uint32_t width, std::uint32_t height) {
  requirePageMemory(form.rowBytes(width));  // first alone: the product below cannot overflow then
  requirePageMemory(std::uint64_t{form.rowBytes(width)} * height);
  return {form, width, height, Bytes(form.rowBytes(width) * height)};
}

std::uint8_t paperByte(const RasterForm& form) {
  switch (form.model) {
    case ColourModel::MinIsWhite:
    case ColourModel::Cmyk:
      return 0;
    case ColourModel::MinIsBlack:
    case ColourModel::Rgb:
      return 0xFF;
    case ColourModel::Palette:
      break;
  }
  std::uint8_t byte = brightestEntry(form);
  for (unsigned bits = form.bitsPerSample; bits < 8; bits *= 2) {
    byte = static_cast<std::uint8_t>(byte | byte << bits);
  }
  return byte;
}

void fillWithPaper(Raster& raster, const PageArea& area) {
  const std::size_t first = std::size_t{area.x} * raster.bitsPerPixel() / 8;
  const std::size_t end = (std::size_t{area.x + area.columns} * raster.bitsPerPixel() + 7) / 8;
  for (std::uint32_t y = area.y; y < area.y + area.rows; ++y) {
    std::fill(raster.row(y) + first, raster.row(y) + end, paperByte(raster));
  }
}

void clearPadding(Raster& raster) {
  const auto usedBits =
      static_cast<unsigned>(static_cast<std::size_t>(raster.width) * raster.bitsPerPixel() % 8);
  if (usedBits == 0) return;
  const std::size_t rowBytes = raster.rowBytes();
  const auto mask = static_cast<std::uint8_t>(0xFF00U >> usedBits);
  for (std::size_t end = rowBytes; end <= raster.pixels.size(); end += rowBytes) {
    raster.pixels[end - 1] &= mask;
  }
}

}  // namespace orvane
