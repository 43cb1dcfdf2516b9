#include "imaging/operations/working_form.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Failure.h"
#include "imaging/raster/conversion.h"

namespace orvane {

void requireRoom(double width, double height, int bitsPerPixel) {
  constexpr double kMaxBytes = 1024.0 * 1024.0 * 1024.0;
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

namespace {

using Tone = std::array<std::uint8_t, 3>;

int brightness(const Tone& tone) {
  return (tone[0] + 2 * tone[1] + tone[2]) / 4;
}

Tone toneAt(const Raster& page, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* pixel = page.row(y) + std::size_t{x} * page.samplesPerPixel;
  if (page.samplesPerPixel == 1) return {pixel[0], pixel[0], pixel[0]};
  return {pixel[0], pixel[1], pixel[2]};
}

// About 4,000 tones from four lines a little inside of each edge; the outermost rows of a scan are
// often dark.
std::vector<Tone> borderTones(const Raster& page) {
  constexpr std::uint32_t kSamplesOfLine = 256;
  std::vector<Tone> tones;
  for (const std::uint32_t percent : {0u, 1u, 2u, 3u}) {
    const auto inset = [&](std::uint32_t size) {
      return static_cast<std::uint32_t>(std::uint64_t{size} * percent / 100);
    };
    const std::uint32_t left = inset(page.width);
    const std::uint32_t top = inset(page.height);
    const std::uint32_t stepX = std::max(1u, page.width / kSamplesOfLine);
    const std::uint32_t stepY = std::max(1u, page.height / kSamplesOfLine);
    for (std::uint32_t x = left; x < page.width - left; x += stepX) {
      tones.push_back(toneAt(page, x, top));
      tones.push_back(toneAt(page, x, page.height - 1 - top));
    }
    for (std::uint32_t y = top; y < page.height - top; y += stepY) {
      tones.push_back(toneAt(page, left, y));
      tones.push_back(toneAt(page, page.width - 1 - left, y));
    }
  }
  return tones;
}

constexpr int kReach = 8;  // levels on either side that still are the same tone

// The level at the peak of the brightest hill that holds a fifth of the tones, or -1.
int brightestCommonLevel(const std::vector<Tone>& tones) {
  std::array<std::size_t, 256 + 2 * kReach> histogram{};
  for (const Tone& tone : tones) ++histogram[static_cast<std::size_t>(brightness(tone) + kReach)];
  const auto around = [&](int level) {
    std::size_t sum = 0;
    for (int i = level; i <= level + 2 * kReach; ++i) sum += histogram[static_cast<std::size_t>(i)];
    return sum;
  };

  int level = 255;
  while (level >= 0 && around(level) * 5 < tones.size()) --level;
  while (level > 0 && around(level - 1) > around(level)) --level;
  return level;
}

}  // namespace

Tone paperTone(const Raster& page) {
  const std::vector<Tone> tones = borderTones(page);
  const int level = brightestCommonLevel(tones);
  if (level < 0) return {255, 255, 255};

  std::array<std::size_t, 3> sums{};
  std::size_t count = 0;
  for (const Tone& tone : tones) {
    if (std::abs(brightness(tone) - level) > kReach) continue;
    for (std::size_t i = 0; i < 3; ++i) sums[i] += tone[i];
    ++count;
  }
  Tone mean{};
  for (std::size_t i = 0; i < 3; ++i) {
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): the hill holds a fifth of the tones
    mean[i] = static_cast<std::uint8_t>((sums[i] + count / 2) / count);
  }
  return mean;
}

}  // namespace orvane
