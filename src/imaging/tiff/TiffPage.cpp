#include "imaging/tiff/TiffPage.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "imaging/tiff/TiffLayout.h"
#include "imaging/tiff/TiffStructure.h"
#include "imaging/tiff/tiff_cost.h"
#include "imaging/tiff/tiff_decode.h"
#include "imaging/tiff/tiff_profile.h"
#include "imaging/tiff/tiff_strips.h"

namespace orvane {
namespace {

TiffDirectoryPlace directoryOfPage(const TiffHandle& tiff, const TiffStructure& structure,
                                   std::int32_t page) {
  std::optional<TiffDirectoryPlace> found;
  std::int32_t number = 0;
  structure.forEachPage([&](const TiffDirectoryPlace& place) {
    if (++number == page) found = place;
    return number < page;
  });
  if (!found) throw tiff.failure("there is no page " + std::to_string(page));
  return *found;
}

// libtiff fills a table that is too short with zeros. An old-style JPEG page may have none.
void requireWholeBlockTable(const TiffHandle& tiff, const std::vector<TiffEntry>& entries,
                            const TiffLayout& layout) {
  if (layout.compression == COMPRESSION_OJPEG) return;
  std::uint64_t offsets = 0;
  for (const std::uint16_t tag : {tag::kStripOffsets, tag::kTileOffsets}) {
    if (const TiffEntry* entry = findEntry(entries, tag)) offsets = std::max(offsets, entry->count);
  }
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
    const TiffStructure structure(tiff.file(), path, tiff.variant());
    const TiffDirectoryPlace directory = directoryOfPage(tiff, structure, page);
    tiff.readDirectory(directory.offset);
    entries = structure.entries(directory);
    layout = readTiffLayout(tiff);
    requireMemory(tiff, layout);
    requireWholeBlockTable(tiff, entries, layout);
    prepareDecoder(tiff, layout);
    info = uprightInfo(tiff, layout);
  }

  TiffHandle tiff;
  std::vector<TiffEntry> entries;  ///< of the page's directory
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

std::optional<StoredJpeg> TiffPage::storedJpeg() const {
  std::optional<StoredJpeg> page = orvane::storedJpeg(impl_->tiff, impl_->layout);
  if (page) page->resolution = impl_->info.resolution;
  return page;
}

std::uint64_t TiffPage::heldFileBytes() const {
  return costOf(impl_->tiff, impl_->layout).file;
}

std::uint64_t TiffPage::memoryToDecode() const {
  return costOf(impl_->tiff, impl_->layout).total();
}

PageProfile TiffPage::iccProfile() const {
  return readIccProfile(impl_->tiff, impl_->layout, impl_->entries);
}

Examined<Raster> TiffPage::decode(const StripRows& codedRows) const {
  return decodeTiff(impl_->tiff, impl_->layout, codedRows);
}

std::int32_t tiffPageCount(const std::wstring& path) {
  const TiffHandle tiff(path);
  std::int32_t pages = 0;
  TiffStructure(tiff.file(), path, tiff.variant()).forEachPage([&](const TiffDirectoryPlace&) {
    return ++pages > 0;
  });
  if (pages == 0) throw tiff.failure("the file has no page");
  return pages;
}

}  // namespace orvane
