#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/StoredJpeg.h"
#include "imaging/raster/icc_profile.h"

namespace orvane {

/// What a page says of itself, seen upright.
struct PageInfo {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t bitsPerPixel = 0;
  Resolution resolution;
  bool storedUpright = true;  ///< TIFF 6.0 Orientation 1: its strips show the page as it is
};

/// One page of a TIFF file (classic or BigTIFF), opened and not yet decoded. Its file stays open as
/// long as the object lives.
class TiffPage {
 public:
  /// Opens page `page`, from 1. Throws Failure with path and reason for a file that is missing, is
  /// no TIFF, has no such page, or whose page would need more than 1 GiB decoded.
  TiffPage(const std::wstring& path, std::int32_t page);
  TiffPage(TiffPage&&) noexcept;
  TiffPage& operator=(TiffPage&&) noexcept;
  ~TiffPage();

  const PageInfo& info() const;

  /// The strips of a page that is encoded as one or more Group 4 strips, brought to fill order 1
  /// and not yet verified; nothing for every other page, and for one whose strips cannot be read
  /// whole.
  std::optional<EncodedImage> group4Strips() const;

  /// The streams of a page that is stored as 8-bit JPEG, as they are and not yet verified; nothing
  /// for every other page. The result refers to this object.
  std::optional<StoredJpeg> storedJpeg() const;

  /// The bytes of the file that are in memory as long as the object lives: all of a small file.
  std::uint64_t heldFileBytes() const;

  /// The most bytes of memory that the page takes while it is decoded, with those of its file.
  std::uint64_t memoryToDecode() const;

  /// The profile of the page's samples as they stand in the file.
  PageProfile iccProfile() const;

  /// Decodes the page and brings it upright (TIFF 6.0 Orientation). Where data is missing the
  /// pixels are paper (white). Damage is reported in the result; a page that cannot be decoded at
  /// all throws Failure. `codedRows` are the rows that the strips really hold, when the caller
  /// knows of fewer than they should; the others are paper.
  Examined<Raster> decode(const StripRows& codedRows = {}) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The number of pages of a TIFF file. Throws Failure with path and reason.
std::int32_t tiffPageCount(const std::wstring& path);

}  // namespace orvane
