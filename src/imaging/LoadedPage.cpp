#include "imaging/LoadedPage.h"

#include <utility>

#include "foundation/Failure.h"
#include "imaging/codecs/group4.h"
#include "imaging/codecs/jpeg_transcode.h"

namespace orvane {

LoadedPage::LoadedPage(const std::wstring& path, std::int32_t pageNumber)
    : file_(std::in_place, path, pageNumber),
      resolution_(file_->info().resolution),
      number_(pageNumber) {}

LoadedPage::LoadedPage(Bitmap bitmap)
    : changed_(std::move(bitmap.pixels)),
      resolution_(bitmap.resolution),
      iccProfile_({std::move(bitmap.iccProfile), {}}) {}

std::uint32_t LoadedPage::width() const {
  return changed_ ? changed_->width : file_->info().width;
}

std::uint32_t LoadedPage::height() const {
  return changed_ ? changed_->height : file_->info().height;
}

std::uint16_t LoadedPage::bitsPerPixel() const {
  return changed_ ? changed_->bitsPerPixel() : file_->info().bitsPerPixel;
}

std::optional<EncodedImage> LoadedPage::wholeGroup4Strips() {
  if (changed_) return std::nullopt;
  std::optional<EncodedImage> strips = file_->group4Strips();
  if (!strips) return std::nullopt;
  damage_ = findGroup4Damage(*strips);
  if (damage_) return std::nullopt;
  return strips;
}

std::optional<EncodedImage> LoadedPage::transcodedJpeg(JpegFactors factors) {
  if (changed_) return std::nullopt;
  const std::optional<EncodedImage> strips = file_->jpegStrips();
  if (!strips) return std::nullopt;
  try {
    return transcodeJpeg(*strips, factors);
  } catch (const Failure& damage) {
    damage_ = damage.what();
    return std::nullopt;
  }
}

const PageProfile& LoadedPage::iccProfile() {
  if (!iccProfile_) iccProfile_ = file_->iccProfile();
  return *iccProfile_;
}

Raster LoadedPage::pixels() {
  return changed_ ? *changed_ : decode();
}

Raster& LoadedPage::changeablePixels() {
  if (!changed_) changed_ = decode();
  return *changed_;
}

// libtiff lets some damage of Group 4 data pass; the walk over its codes does not.
Raster LoadedPage::decode() {
  DecodedPage decoded = file_->decode();
  if (decoded.damage) damage_ = std::move(decoded.damage);
  if (!damage_) wholeGroup4Strips();
  return std::move(decoded.raster);
}

}  // namespace orvane
