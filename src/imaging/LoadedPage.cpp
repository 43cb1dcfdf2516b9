#include "imaging/LoadedPage.h"

#include <utility>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/jpeg/jpeg_transcode.h"

namespace orvane {

LoadedPage::LoadedPage(const std::wstring& path, std::int32_t pageNumber)
    : file_(std::in_place, path, pageNumber),
      resolution_(file_->info().resolution),
      number_(pageNumber) {}

LoadedPage::LoadedPage(Bitmap&& bitmap)
    : held_({std::move(bitmap.pixels), {}}),
      resolution_(bitmap.resolution),
      bitmapProfile_(std::move(bitmap.iccProfile)) {}

std::uint32_t LoadedPage::width() const {
  return held_ ? held_->value.width : file_->info().width;
}

std::uint32_t LoadedPage::height() const {
  return held_ ? held_->value.height : file_->info().height;
}

std::uint16_t LoadedPage::bitsPerPixel() const {
  return held_ ? held_->value.bitsPerPixel() : file_->info().bitsPerPixel;
}

std::uint64_t LoadedPage::heldBytes() const {
  return (held_ ? held_->value.pixels.size() : 0) + (file_ ? file_->heldFileBytes() : 0);
}

std::uint64_t LoadedPage::bytesToEncode() const {
  const std::uint64_t decoded = (std::uint64_t{width()} * bitsPerPixel() + 7) / 8 * height();
  return decoded + (held_ ? heldBytes() : file_->memoryToDecode());
}

PageProfile LoadedPage::iccProfile() const {
  return file_ ? file_->iccProfile() : PageProfile{bitmapProfile_, {}};
}

namespace {

struct ExaminedStrips {
  Group4Copy copy;
  DataState data;
};

ExaminedStrips examined(EncodedImage strips, Group4Output output) {
  const std::uint32_t promisedRows = strips.height;
  Group4Copy copy = copyGroup4(std::move(strips), output);
  DataState data{copy.damage, earlyEndOf(copy.codedRows, promisedRows)};
  return {std::move(copy), std::move(data)};
}

}  // namespace

Examined<std::optional<EncodedImage>> LoadedPage::group4Copy(Group4Output output) const {
  if (held_ || !file_->info().storedUpright) return {};
  std::optional<EncodedImage> strips = file_->group4Strips();
  if (!strips || strips->photometric > Photometric::MinIsBlack) return {};
  ExaminedStrips walked = examined(*std::move(strips), output);
  return {std::move(walked.copy.image), std::move(walked.data)};
}

Examined<std::optional<EncodedImage>> LoadedPage::transcodedJpeg(JpegFactors factors) const {
  if (held_) return {};
  const std::optional<StoredJpeg> page = file_->storedJpeg();
  if (!page) return {};
  try {
    return {transcodeJpeg(*page, factors), {}};
  } catch (const Failure& damage) {
    return {std::nullopt, {damage.what(), {}}};
  }
}

Examined<Raster> LoadedPage::pixels() const {
  return held_ ? *held_ : decode();
}

Examined<Raster>& LoadedPage::holdPixels() {
  if (!held_) held_ = decode();
  return *held_;
}

namespace {

DataState examined(const StoredJpeg& page) {
  try {
    verifyJpeg(page);
    return {};
  } catch (const Failure& damage) {
    return {damage.what(), {}};
  }
}

}  // namespace

// libtiff and libjpeg accept some damaged Group 4 and JPEG data; the walk over its codes does not.
// libtiff also takes an early end of a fax page for damage; the walk tells how many rows can be
// decoded.
Examined<Raster> LoadedPage::decode() const {
  StripRows codedRows;
  DataState data;
  if (std::optional<EncodedImage> strips = file_->group4Strips()) {
    ExaminedStrips walked = examined(*std::move(strips), Group4Output::Strips);
    codedRows = std::move(walked.copy.codedRows);
    data = std::move(walked.data);
  } else if (const std::optional<StoredJpeg> page = file_->storedJpeg()) {
    data = examined(*page);
  }
  Examined<Raster> decoded = file_->decode(codedRows);
  data.add(std::move(decoded.data));
  return {std::move(decoded.value), std::move(data)};
}

// A transcoding with the finest steps changes none: it verifies the data and copies it.
CheckedData checkPage(const LoadedPage& page, const std::wstring& path) {
  auto copy = page.group4Copy(Group4Output::Strips);
  CheckedData checked{std::move(copy.value), {}};
  const bool isDone = checked.group4 || copy.data.damage;
  if (!isDone) copy = page.transcodedJpeg({.major = 0, .minor = 0});
  if (!isDone && !copy.value && !copy.data.damage) {
    Examined<Raster> decoded = page.pixels();
    checked.pixels = std::move(decoded.value);
    copy.data = std::move(decoded.data);
  }
  if (copy.data.damage) throw Failure(path + L": " + fromUtf8(*copy.data.damage));
  return checked;
}

}  // namespace orvane
