#include "intake/png_page.h"

#include <algorithm>
#include <array>
#include <bit>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <png.h>
#include <utility>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "intake/page_file.h"
#include "intake/resolution.h"

namespace orvane {
namespace {

/// What a PNG file says before its pixels (ISO/IEC 15948 clause 11).
struct PngHead {
  png_uint_32 width = 0;
  png_uint_32 height = 0;
  int bits = 0;
  int colour = 0;  ///< PNG_COLOR_TYPE_*
  png_uint_32 perMetreX = 0;
  png_uint_32 perMetreY = 0;
  std::array<png_color, 256> palette{};
  bool hasTransparency = false;           ///< tRNS
  std::array<png_byte, 256> opacities{};  ///< of the palette; 255 where none is stated
  png_color_16 transparent{};             ///< the colour that is not there, of others
};

/// One PNG file in libpng. Its errors become Failure with libpng's text.
class PngStream {
 public:
  explicit PngStream(ByteView file) : rest_(file) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, leave, ignore);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
  }
  PngStream(const PngStream&) = delete;
  PngStream& operator=(const PngStream&) = delete;
  ~PngStream() { png_destroy_read_struct(&png_, &info_, nullptr); }

  /// Reads all that comes before the pixels. To be called first.
  PngHead readHead() {
    if (info_ == nullptr) throw std::bad_alloc();
    PngHead head;
    if (!tryReadHead(head)) fail();
    return head;
  }

  /// The profile of the head that was read; empty for none.
  Bytes profile() const { return {profile_, profile_ + profileSize_}; }

  /// Fills the raster, which has the size and form of the head. To be called once.
  void readPixels(Raster& raster) {
    std::vector<png_bytep> rows(raster.height);
    for (std::uint32_t y = 0; y < raster.height; ++y) rows[y] = raster.row(y);
    if (!tryReadPixels(rows.data())) fail();
    clearPadding(raster);
  }

 private:
  // libpng is C and is left by a jump; nothing that it skips may need a destructor.
  [[noreturn]] static void leave(png_structp png, png_const_charp text) {
    auto* self = static_cast<PngStream*>(png_get_error_ptr(png));
    std::snprintf(self->text_.data(), self->text_.size(), "%s", text);
    std::longjmp(self->jump_, 1);
  }

  static void ignore(png_structp, png_const_charp) {}

  static void read(png_structp png, png_bytep to, std::size_t size) {
    auto* self = static_cast<PngStream*>(png_get_io_ptr(png));
    if (size > self->rest_.size()) png_error(png, "the file ends too early");
    std::memcpy(to, self->rest_.data(), size);
    self->rest_ = self->rest_.subspan(size);
  }

  [[noreturn]] void fail() const {
    throw Failure(L"PNG 数据损坏，或者读不了：" + fromUtf8(text_.data()));
  }

  bool tryReadHead(PngHead& head);
  bool tryReadPixels(png_bytepp rows);

  ByteView rest_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  png_const_bytep profile_ = nullptr;  // of libpng
  std::size_t profileSize_ = 0;
  std::array<char, 200> text_{};
  std::jmp_buf jump_;
};

bool PngStream::tryReadHead(PngHead& head) {
  constexpr png_uint_32 kLongestSide = 1'000'000;
  constexpr png_alloc_size_t kMostChunkBytes = std::size_t{8} << 20;
  if (setjmp(jump_) != 0) return false;
  png_set_read_fn(png_, this, read);
  png_set_user_limits(png_, kLongestSide, kLongestSide);
  png_set_chunk_malloc_max(png_, kMostChunkBytes);
  png_read_info(png_, info_);
  png_get_IHDR(png_, info_, &head.width, &head.height, &head.bits, &head.colour, nullptr, nullptr,
               nullptr);
  int unit = PNG_RESOLUTION_UNKNOWN;
  png_get_pHYs(png_, info_, &head.perMetreX, &head.perMetreY, &unit);
  if (unit != PNG_RESOLUTION_METER) head.perMetreX = head.perMetreY = 0;

  png_colorp colours = nullptr;
  int colourCount = 0;
  png_get_PLTE(png_, info_, &colours, &colourCount);
  for (int i = 0; i < colourCount; ++i) head.palette[static_cast<std::size_t>(i)] = colours[i];
  png_bytep opacities = nullptr;
  int opacityCount = 0;
  png_color_16p colour = nullptr;
  head.opacities.fill(0xFF);
  head.hasTransparency = png_get_tRNS(png_, info_, &opacities, &opacityCount, &colour) != 0;
  if (head.hasTransparency && head.colour == PNG_COLOR_TYPE_PALETTE) {
    for (int i = 0; i < opacityCount; ++i)
      head.opacities[static_cast<std::size_t>(i)] = opacities[i];
  } else if (head.hasTransparency && colour != nullptr) {
    head.transparent = *colour;
  }
  png_charp name = nullptr;
  int method = 0;
  png_bytep profile = nullptr;
  png_uint_32 size = 0;
  if (png_get_iCCP(png_, info_, &name, &method, &profile, &size) != 0) {
    profile_ = profile;
    profileSize_ = size;
  }
  return true;
}

bool PngStream::tryReadPixels(png_bytepp rows) {
  if (setjmp(jump_) != 0) return false;
  if (std::endian::native == std::endian::little) png_set_swap(png_);
  png_set_interlace_handling(png_);
  png_read_image(png_, rows);
  png_read_end(png_, nullptr);
  return true;
}

// A sample of a colour that shows `opacity` of `most` of itself before white.
template <typename Number>
Number overWhite(Number sample, std::uint64_t opacity, std::uint64_t most) {
  return static_cast<Number>((sample * opacity + most * (most - opacity) + most / 2) / most);
}

// The entries as they look on white paper.
std::vector<std::uint16_t> paletteOf(const PngHead& head) {
  constexpr std::uint16_t kSpread = 257;
  const std::size_t entries = std::size_t{1} << head.bits;
  std::vector<std::uint16_t> palette(3 * entries);
  for (std::size_t i = 0; i < entries; ++i) {
    const png_color& entry = head.palette[i];
    const std::array<png_byte, 3> colour{entry.red, entry.green, entry.blue};
    for (std::size_t part = 0; part < colour.size(); ++part) {
      palette[part * entries + i] = static_cast<std::uint16_t>(
          kSpread * overWhite<std::uint8_t>(colour[part], head.opacities[i], 0xFF));
    }
  }
  return palette;
}

RasterForm formOf(const PngHead& head) {
  RasterForm form;
  form.bitsPerSample = static_cast<std::uint16_t>(head.bits);
  const bool hasColour = (head.colour & PNG_COLOR_MASK_COLOR) != 0;
  form.model = hasColour ? ColourModel::Rgb : ColourModel::MinIsBlack;
  form.samplesPerPixel = hasColour ? 3 : 1;
  if (head.colour == PNG_COLOR_TYPE_PALETTE) {
    form.model = ColourModel::Palette;
    form.samplesPerPixel = 1;
    form.palette = paletteOf(head);
  }
  if ((head.colour & PNG_COLOR_MASK_ALPHA) != 0) {
    form.extraSample = ExtraSample::UnassociatedAlpha;
    ++form.samplesPerPixel;
  }
  return form;
}

// Puts the pixels on white paper. The last sample of each is its opacity, which goes.
template <typename Sample>
Raster withoutAlpha(const Raster& raster) {
  constexpr std::uint64_t kMost = std::numeric_limits<Sample>::max();
  RasterForm form = static_cast<const RasterForm&>(raster);
  form.extraSample = ExtraSample::None;
  --form.samplesPerPixel;
  Raster paper = emptyRaster(form, raster.width, raster.height);
  const auto* from = reinterpret_cast<const Sample*>(raster.pixels.data());
  auto* to = reinterpret_cast<Sample*>(paper.pixels.data());
  const std::size_t pixels = std::size_t{raster.width} * raster.height;
  for (std::size_t i = 0; i < pixels; ++i, ++from) {
    const Sample opacity = from[form.samplesPerPixel];
    for (unsigned s = 0; s < form.samplesPerPixel; ++s) {
      *to++ = overWhite<Sample>(*from++, opacity, kMost);
    }
  }
  return paper;
}

std::uint16_t sampleAt(const Raster& raster, const std::uint8_t* row, std::size_t index) {
  if (raster.bitsPerSample == 16) return reinterpret_cast<const std::uint16_t*>(row)[index];
  return shallowSample(row, index, raster.bitsPerSample);
}

void putWhite(const Raster& raster, std::uint8_t* row, std::size_t index) {
  if (raster.bitsPerSample == 16) {
    reinterpret_cast<std::uint16_t*>(row)[index] = 0xFFFF;
  } else {
    const auto most = static_cast<std::uint8_t>((1U << raster.bitsPerSample) - 1);
    putShallowSample(row, index, raster.bitsPerSample, most);
  }
}

// Makes the pixels of one colour, which is stated as not there, white.
void clearColour(Raster& raster, const png_color_16& colour) {
  std::array<std::uint16_t, 3> samples{colour.red, colour.green, colour.blue};
  const std::size_t count = raster.samplesPerPixel;
  if (count == 1) samples[0] = colour.gray;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    std::uint8_t* const row = raster.row(y);
    for (std::size_t x = 0; x < raster.width; ++x) {
      bool isThere = false;
      for (std::size_t s = 0; s < count; ++s) {
        isThere = isThere || sampleAt(raster, row, x * count + s) != samples[s];
      }
      for (std::size_t s = 0; s < count && !isThere; ++s) putWhite(raster, row, x * count + s);
    }
  }
}

}  // namespace

void requirePng(ByteView file) {
  const PngHead head = PngStream(file).readHead();
  requireRoom(std::uint64_t{formOf(head).rowBytes(head.width)} * head.height);
}

EncodedImage pngPage(ByteView file) {
  constexpr double kMetresPerInch = 0.0254;
  PngStream png(file);
  const PngHead head = png.readHead();
  Raster raster = emptyRaster(formOf(head), head.width, head.height);
  png.readPixels(raster);
  if (raster.extraSample != ExtraSample::None) {
    raster = raster.bitsPerSample == 16 ? withoutAlpha<std::uint16_t>(raster)
                                        : withoutAlpha<std::uint8_t>(raster);
  } else if (head.hasTransparency && raster.model != ColourModel::Palette) {
    clearColour(raster, head.transparent);
  }
  EncodedImage image = encodeWithoutLoss(std::move(raster));
  image.resolution = statedResolution(head.perMetreX, head.perMetreY, kMetresPerInch);
  image.iccProfile = png.profile();
  return image;
}

}  // namespace orvane
