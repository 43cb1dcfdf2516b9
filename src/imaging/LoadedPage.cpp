#include "imaging/LoadedPage.h"

#include <utility>

#include "foundation/Failure.h"
#include "foundation/utf8_text.h"
#include "imaging/jpeg/jpeg_transcode.h"

namespace orvane {

LoadedPage::LoadedPage(const std::wstring& path, std::int32_t pageNumber)
    : file_(std::in_place, path, pageNumber),
      resolution_(file_->info().resolution),
      number_(pageNumber) {}

LoadedPage::LoadedPage(Bitmap&& bitmap)
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

Group4Copy LoadedPage::checkedGroup4(EncodedImage strips, Group4Form form) {
  const std::uint32_t promisedRows = strips.height;
  Group4Copy copy = copyGroup4(std::move(strips), form);
  damage_ = copy.damage;
  earlyEnd_ = earlyEndOf(copy.codedRows, promisedRows);
  return copy;
}

std::optional<EncodedImage> LoadedPage::group4Copy(Group4Form form) {
  if (changed_ || !file_->info().storedUpright) return std::nullopt;
  std::optional<EncodedImage> strips = file_->group4Strips();
  if (!strips || strips->photometric > Photometric::MinIsBlack) return std::nullopt;
  return checkedGroup4(*std::move(strips), form).image;
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

// libtiff lets some damage of Group 4 data pass; the walk over its codes does not. And libtiff
// takes an early end for damage; the walk tells how many rows it may be asked for.
Raster LoadedPage::decode() {
  StripRows codedRows;
  if (std::optional<EncodedImage> strips = file_->group4Strips()) {
    codedRows = checkedGroup4(*std::move(strips), Group4Form::Strips).codedRows;
  }
  DecodedPage decoded = file_->decode(codedRows);
  if (decoded.damage) damage_ = std::move(decoded.damage);
  if (decoded.earlyEnd) earlyEnd_ = decoded.earlyEnd;
  return std::move(decoded.raster);
}

void checkPage(const std::wstring& path) {
  LoadedPage page(path, 1);
  const bool copied = page.group4Copy(Group4Form::Strips) || page.transcodedJpeg(JpegFactors{});
  if (!copied && !page.damage()) page.pixels();
  if (page.damage()) throw Failure(path + L": " + fromUtf8(*page.damage()));
}

}  // namespace orvane
