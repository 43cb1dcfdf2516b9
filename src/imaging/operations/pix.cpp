#include "imaging/operations/pix.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <new>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/raster/conversion.h"

namespace orvane {

void requireRoom(double width, double height, int bitsPerPixel) {
  constexpr auto kMaxBytes = static_cast<double>(kMaxPageBytes);
  constexpr double kMaxSide = 4.0 * 1024.0 * 1024.0;
  if (std::max(width, height) <= kMaxSide && width * height * bitsPerPixel / 8 <= kMaxBytes) return;
  throw Failure("an image of " + std::to_string(std::llround(width)) + " x " +
                std::to_string(std::llround(height)) +
                " pixels is too large to work on (at most 1 GiB, at most 4194304 pixels a side)");
}

Raster toWorkingForm(Raster raster) {
  if (raster.bitsPerPixel() == 1) return toBilevel(std::move(raster));
  const bool gray =
      raster.model == ColourModel::MinIsWhite || raster.model == ColourModel::MinIsBlack;
  requireRoom(raster.width, raster.height, gray ? 8 : 24);
  return toGrayOrRgb8(std::move(raster));
}

namespace {

// Leptonica also writes its errors to standard error. Here a failed call becomes a Failure, so its
// messages are switched off before the first call.
void silenceLeptonica() {
  static const int previous = setMsgSeverity(L_SEVERITY_NONE);
  static_cast<void>(previous);
}

// Leptonica stores a row in 32-bit words; the most significant byte is the leftmost one.
void copyRowToWords(const std::uint8_t* row, std::size_t bytes, l_uint32* words) {
  for (std::size_t i = 0; i < bytes; ++i) {
    words[i / 4] |= static_cast<l_uint32>(row[i]) << (24 - 8 * (i % 4));
  }
}

void copyRowFromWords(const l_uint32* words, std::size_t bytes, std::uint8_t* row) {
  for (std::size_t i = 0; i < bytes; ++i) {
    row[i] = static_cast<std::uint8_t>(words[i / 4] >> (24 - 8 * (i % 4)));
  }
}

void copyColoursToWords(const std::uint8_t* row, std::uint32_t width, l_uint32* words) {
  for (std::uint32_t x = 0; x < width; ++x, row += 3) {
    words[x] = static_cast<l_uint32>(row[0]) << L_RED_SHIFT |
               static_cast<l_uint32>(row[1]) << L_GREEN_SHIFT |
               static_cast<l_uint32>(row[2]) << L_BLUE_SHIFT;
  }
}

void copyColoursFromWords(const l_uint32* words, std::uint32_t width, std::uint8_t* row) {
  for (std::uint32_t x = 0; x < width; ++x, row += 3) {
    row[0] = static_cast<std::uint8_t>(words[x] >> L_RED_SHIFT);
    row[1] = static_cast<std::uint8_t>(words[x] >> L_GREEN_SHIFT);
    row[2] = static_cast<std::uint8_t>(words[x] >> L_BLUE_SHIFT);
  }
}

}  // namespace

PixHandle checkedPix(PIX* pix, const char* call) {
  if (pix == nullptr && errno == ENOMEM) throw std::bad_alloc();
  if (pix == nullptr) throw Failure(std::string(call) + " failed");
  return PixHandle(pix);
}

PixHandle toPix(const Raster& page) {
  silenceLeptonica();
  const bool colour = page.samplesPerPixel == 3;
  requireRoom(page.width, page.height, colour ? 32 : page.bitsPerPixel());
  PixHandle pix =
      checkedPix(pixCreate(static_cast<l_int32>(page.width), static_cast<l_int32>(page.height),
                           colour ? 32 : page.bitsPerPixel()),
                 "pixCreate");
  for (std::uint32_t y = 0; y < page.height; ++y) {
    l_uint32* words = pixGetData(pix.get()) + std::size_t{y} * pixGetWpl(pix.get());
    if (colour) {
      copyColoursToWords(page.row(y), page.width, words);
    } else {
      copyRowToWords(page.row(y), page.rowBytes(), words);
    }
  }
  return pix;
}

Raster toRaster(const PixHandle& pix) {
  const l_int32 depth = pixGetDepth(pix.get());
  const bool colour = depth == 32;
  RasterForm form;
  form.bitsPerSample = depth == 1 ? 1 : 8;
  form.samplesPerPixel = colour ? 3 : 1;
  form.model = colour       ? ColourModel::Rgb
               : depth == 1 ? ColourModel::MinIsWhite
                            : ColourModel::MinIsBlack;
  Raster page = emptyRaster(form, static_cast<std::uint32_t>(pixGetWidth(pix.get())),
                            static_cast<std::uint32_t>(pixGetHeight(pix.get())));
  for (std::uint32_t y = 0; y < page.height; ++y) {
    const l_uint32* words = pixGetData(pix.get()) + std::size_t{y} * pixGetWpl(pix.get());
    if (colour) {
      copyColoursFromWords(words, page.width, page.row(y));
    } else {
      copyRowFromWords(words, page.rowBytes(), page.row(y));
    }
  }
  clearPadding(page);
  return page;
}

}  // namespace orvane
