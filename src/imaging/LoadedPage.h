#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/Bytes.h"
#include "imaging/group4/group4.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/tiff/TiffPage.h"

namespace orvane {

/// A bitmap that one instance passes to another.
struct Bitmap {
  Raster pixels;
  Resolution resolution;
  Bytes iccProfile;  ///< of the page that was copied; empty: none
};

/// The page that an instance holds: a page of a file, as it is stored there, or pixels. A page that
/// is only saved again is not decoded if its strips can be copied. Reading changes nothing in the
/// object; it shares no state with other pages.
class LoadedPage {
 public:
  /// A page of a file. Throws Failure as TiffPage does.
  LoadedPage(const std::wstring& path, std::int32_t pageNumber);
  /// A bitmap of another instance.
  explicit LoadedPage(Bitmap&& bitmap);

  std::uint32_t width() const;
  std::uint32_t height() const;
  std::uint16_t bitsPerPixel() const;
  const Resolution& resolution() const { return resolution_; }
  void setResolution(const Resolution& resolution) { resolution_ = resolution; }
  /// The number of the page in its file, from 1; 0 for a bitmap of another instance.
  std::int32_t number() const { return number_; }

  /// The bytes that the page holds now, and the most that it takes while it is encoded, with its
  /// encoding.
  std::uint64_t heldBytes() const;
  std::uint64_t bytesToEncode() const;

  /// A copy of the page's own Group 4 strips; nothing if the page is held as pixels or its strips
  /// cannot be copied (see copyGroup4).
  Examined<std::optional<EncodedImage>> group4Copy(Group4Output output) const;

  /// The page as a JPEG save, made of its own JPEG strips (see transcodeJpeg); nothing if the page
  /// is held as pixels, its strips do not allow it, or they are damaged.
  Examined<std::optional<EncodedImage>> transcodedJpeg(JpegFactors factors) const;

  /// The pixels: decoded from the file, or a copy of those that are held.
  Examined<Raster> pixels() const;

  /// Decodes the page unless that has been done, and holds its pixels from then on. The caller may
  /// change them.
  Examined<Raster>& holdPixels();

  /// The page's ICC profile, which describes its samples as they were loaded.
  PageProfile iccProfile() const;

 private:
  Examined<Raster> decode() const;

  std::optional<TiffPage> file_;
  std::optional<Examined<Raster>> held_;
  Resolution resolution_;
  Bytes bitmapProfile_;
  std::int32_t number_ = 0;
};

/// What a check of a page has read. A page that is stored as JPEG may leave neither.
struct CheckedData {
  std::optional<EncodedImage> group4;  ///< strips that have been verified
  std::optional<Raster> pixels;
};

/// Reads the image data of a page as an export does, and writes nothing: strips that would be
/// copied are verified, all others are decoded. Throws Failure "<path>: <reason>" for data that is
/// damaged: an export of the page would fail.
CheckedData checkPage(const LoadedPage& page, const std::wstring& path);

}  // namespace orvane
