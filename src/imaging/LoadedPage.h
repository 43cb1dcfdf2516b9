#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "imaging/BitmapHandles.h"
#include "imaging/group4/group4.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/tiff/TiffPage.h"

namespace orvane {

/// The page that an instance holds: untouched as it lies in its file, or pixels that an operation
/// has changed. A page that is only re-saved is never turned to pixels when its strips will do.
class LoadedPage {
 public:
  /// A page of a file. Throws Failure as TiffPage does.
  LoadedPage(const std::wstring& path, std::int32_t pageNumber);
  /// A bitmap taken over from another instance.
  explicit LoadedPage(Bitmap&& bitmap);

  std::uint32_t width() const;
  std::uint32_t height() const;
  std::uint16_t bitsPerPixel() const;
  const Resolution& resolution() const { return resolution_; }
  void setResolution(const Resolution& resolution) { resolution_ = resolution; }
  /// The number of the page in its file, from 1; 0 for a bitmap of another instance.
  std::int32_t number() const { return number_; }

  /// A copy of the page's own Group 4 strips, when nothing has changed it and they allow it (see
  /// copyGroup4). Damage in them is noted, and an early end.
  std::optional<EncodedImage> group4Copy(Group4Form form);

  /// The page as a JPEG save without a turn through its pixels, when nothing has changed it and its
  /// own JPEG strips allow it. Damage in them is noted.
  std::optional<EncodedImage> transcodedJpeg(JpegFactors factors);

  /// The pixels, for a reader that keeps them: decoded anew from the file, or a copy of the changed
  /// ones. Damage met on the way is noted, and an early end.
  Raster pixels();

  /// The pixels, to be changed in place.
  Raster& changeablePixels();

  /// The page's ICC profile, which describes its samples as they were loaded.
  const PageProfile& iccProfile();

  /// Notes why the page goes out without its profile; empty when it has none, or keeps it.
  void noteProfileLeftOut(std::wstring reason) { profileLeftOut_ = std::move(reason); }
  const std::wstring& profileLeftOut() const { return profileLeftOut_; }

  /// Why the page's image data is damaged, as far as it has been looked at.
  const std::optional<std::string>& damage() const { return damage_; }

  /// Where the page's image data ends before its last row without being damaged, as far as it has
  /// been looked at. The rows that were never coded are paper.
  const std::optional<EarlyEnd>& earlyEnd() const { return earlyEnd_; }

 private:
  Raster decode();
  Group4Copy checkedGroup4(EncodedImage strips, Group4Form form);

  std::optional<TiffPage> file_;
  std::optional<Raster> changed_;
  Resolution resolution_;
  std::optional<PageProfile> iccProfile_;  ///< read when it is first asked for
  std::wstring profileLeftOut_;
  std::int32_t number_ = 0;
  std::optional<std::string> damage_;
  std::optional<EarlyEnd> earlyEnd_;
};

/// Reads the first page of an image file as an export does, and writes nothing: strips that would
/// be copied are verified, all others are decoded. Throws Failure "<path>: <reason>" for a page
/// that cannot be opened and for one whose image data is damaged: an export of it would fail.
void checkPage(const std::wstring& path);

}  // namespace orvane
