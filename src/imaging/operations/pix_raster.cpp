#include "imaging/operations/pix_raster.h"

#include <cerrno>
#include <new>
#include <string>

#include "foundation/Failure.h"
#include "imaging/operations/working_form.h"

namespace orvane {
namespace {

// Leptonica reports on the standard error what its callers also learn from the result; here a
// failed call becomes a Failure, so its own lines are switched off before the first call.
void silenceLeptonica() {
  static const int previous = setMsgSeverity(L_SEVERITY_NONE);
  static_cast<void>(previous);
}

// Leptonica keeps a row in 32-bit words whose most significant byte is the leftmost one.
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
  Raster form;
  form.bitsPerSample = static_cast<std::uint16_t>(pixGetDepth(pix.get()));
  form.model = form.bitsPerSample == 1 ? ColourModel::MinIsWhite : ColourModel::MinIsBlack;
  Raster page = emptyRaster(form, static_cast<std::uint32_t>(pixGetWidth(pix.get())),
                            static_cast<std::uint32_t>(pixGetHeight(pix.get())));
  for (std::uint32_t y = 0; y < page.height; ++y) {
    const l_uint32* words = pixGetData(pix.get()) + std::size_t{y} * pixGetWpl(pix.get());
    copyRowFromWords(words, page.rowBytes(), page.row(y));
  }
  return page;
}

}  // namespace orvane
