#include "imaging/tiff/TiffPage.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "imaging/tiff/TiffLayout.h"
#include "imaging/tiff/tiff_decode.h"
#include "imaging/tiff/tiff_directories.h"
#include "imaging/tiff/tiff_profile.h"
#include "imaging/tiff/tiff_strips.h"

namespace orvane {
namespace {

std::uint64_t directoryOfPage(const TiffHandle& tiff, std::int32_t page) {
  TiffDirectories directories(tiff);
  std::uint64_t offset = 0;
  for (std::int32_t i = 1; page > 0 && i <= page; ++i) {
    offset = directories.next();
    if (offset == 0) break;
  }
  if (offset == 0) throw tiff.failure("there is no page " + std::to_string(page));
  return offset;
}

// libtiff fills a table that is too short with zeros. An old-style JPEG page may have none.
void requireWholeBlockTable(const TiffHandle& tiff, std::uint64_t directory,
                            const TiffLayout& layout) {
  if (layout.compression == COMPRESSION_OJPEG) return;
  const TiffDirectories directories(tiff);
  const std::uint64_t offsets = std::max(directories.valueCount(directory, TIFFTAG_STRIPOFFSETS),
                                         directories.valueCount(directory, TIFFTAG_TILEOFFSETS));
  if (offsets < layout.blockCount) {
    throw tiff.failure("it names " + std::to_string(offsets) + " of " +
                       std::to_string(layout.blockCount) + " strips or tiles");
  }
}

PageInfo uprightInfo(const TiffHandle& tiff, const TiffLayout& layout) {
  PageInfo info;
  info.width = layout.width;
  info.height = layout.height;
  info.bitsPerPixel = layout.form.bitsPerPixel();
  info.resolution = tiffResolution(tiff.get());
  info.storedUpright = layout.orientation == ORIENTATION_TOPLEFT;
  if (layout.turnsSideways()) {
    std::swap(info.width, info.height);
    std::swap(info.resolution.x, info.resolution.y);
  }
  return info;
}

}  // namespace

struct TiffPage::Impl {
  Impl(const std::wstring& path, std::int32_t page) : tiff(path) {
    directory = directoryOfPage(tiff, page);
    tiff.readDirectory(directory);
    layout = readTiffLayout(tiff);
    requireWholeBlockTable(tiff, directory, layout);
    info = uprightInfo(tiff, layout);
  }

  TiffHandle tiff;
  std::uint64_t directory = 0;
  TiffLayout layout;
  PageInfo info;
};

TiffPage::TiffPage(const std::wstring& path, std::int32_t page)
    : impl_(std::make_unique<Impl>(path, page)) {}

TiffPage::TiffPage(TiffPage&&) noexcept = default;
TiffPage& TiffPage::operator=(TiffPage&&) noexcept = default;
TiffPage::~TiffPage() = default;

const PageInfo& TiffPage::info() const {
  return impl_->info;
}

std::optional<EncodedImage> TiffPage::group4Strips() const {
  std::optional<EncodedImage> image = readGroup4Strips(impl_->tiff, impl_->layout);
  if (image) image->resolution = impl_->info.resolution;
  return image;
}

std::optional<EncodedImage> TiffPage::jpegStrips() const {
  std::optional<EncodedImage> image = readJpegStrips(impl_->tiff, impl_->layout);
  if (image) image->resolution = impl_->info.resolution;
  return image;
}

PageProfile TiffPage::iccProfile() const {
  return readIccProfile(impl_->tiff, impl_->layout, impl_->directory);
}

DecodedPage TiffPage::decode(const StripRows& codedRows) const {
  return decodeTiff(impl_->tiff, impl_->layout, codedRows);
}

std::optional<EarlyEnd> earlyEndOf(const StripRows& codedRows, std::uint32_t promisedRows) {
  const std::uint32_t coded = std::accumulate(codedRows.begin(), codedRows.end(), 0U);
  if (codedRows.empty() || coded == promisedRows) return std::nullopt;
  return EarlyEnd{coded, promisedRows};
}

std::int32_t tiffPageCount(const std::wstring& path) {
  const TiffHandle tiff(path);
  TiffDirectories directories(tiff);
  std::int32_t pages = 0;
  while (directories.next() != 0) ++pages;
  if (pages == 0) throw tiff.failure("the file has no page");
  return pages;
}

}  // namespace orvane
