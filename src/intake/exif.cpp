#include "intake/exif.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "imaging/tiff/TiffVariant.h"
#include "intake/resolution.h"

namespace orvane {
namespace {

constexpr std::string_view kName("Exif\0\0", 6);

// Exif data is a small classic TIFF file, whose first directory is about the picture.
class ExifDirectory {
 public:
  explicit ExifDirectory(ByteView tiff) : tiff_(tiff) {
    if (tiff.size() < 8) return;
    variant_.bigEndian = tiff[0] == 'M';
    const std::uint64_t at =
        variant_.get(tiff.data() + variant_.firstLink(), variant_.offsetBytes());
    if (!isInside(at, variant_.countBytes())) return;
    first_ = at + variant_.countBytes();
    count_ = variant_.get(tiff.data() + at, variant_.countBytes());
  }

  std::optional<std::uint64_t> shortValue(std::uint16_t tag) const {
    const std::optional<std::uint64_t> entry = find(tag, TiffType::Short);
    if (!entry) return std::nullopt;
    return variant_.get(tiff_.data() + *entry + variant_.valuePlace(), 2);
  }

  double rationalValue(std::uint16_t tag) const {
    const std::optional<std::uint64_t> entry = find(tag, TiffType::Rational);
    if (!entry) return 0;
    const std::uint64_t at = variant_.get(tiff_.data() + *entry + variant_.valuePlace(), 4);
    if (!isInside(at, 8)) return 0;
    const std::uint64_t denominator = variant_.get(tiff_.data() + at + 4, 4);
    if (denominator == 0) return 0;
    return static_cast<double>(variant_.get(tiff_.data() + at, 4)) /
           static_cast<double>(denominator);
  }

 private:
  bool isInside(std::uint64_t at, std::uint64_t length) const {
    return at <= tiff_.size() && length <= tiff_.size() - at;
  }

  // The position of the entry of a tag with one value of a type.
  std::optional<std::uint64_t> find(std::uint16_t tag, TiffType type) const {
    for (std::uint64_t i = 0; i < count_; ++i) {
      const std::uint64_t entry = first_ + i * variant_.entryBytes();
      if (!isInside(entry, variant_.entryBytes())) return std::nullopt;
      const std::uint8_t* const bytes = tiff_.data() + entry;
      if (variant_.get(bytes, 2) != tag) continue;
      const bool fits = variant_.get(bytes + 2, 2) == static_cast<std::uint16_t>(type) &&
                        variant_.get(bytes + 4, 4) == 1;
      return fits ? std::optional(entry) : std::nullopt;
    }
    return std::nullopt;
  }

  ByteView tiff_;
  TiffVariant variant_;
  std::uint64_t first_ = 0;
  std::uint64_t count_ = 0;
};

}  // namespace

ExifNotes readExif(ByteView segment) {
  ExifNotes notes;
  if (segment.size() < kName.size() || !std::equal(kName.begin(), kName.end(), segment.begin())) {
    return notes;
  }
  constexpr std::uint64_t kCentimetres = 3;
  const ExifDirectory directory(segment.subspan(kName.size()));
  const std::uint64_t orientation = directory.shortValue(tag::kOrientation).value_or(1);
  if (orientation >= 1 && orientation <= 8) {
    notes.orientation = static_cast<std::uint16_t>(orientation);
  }
  const bool metric = directory.shortValue(tag::kResolutionUnit) == kCentimetres;
  notes.resolution = statedResolution(directory.rationalValue(tag::kXResolution),
                                      directory.rationalValue(tag::kYResolution),
                                      metric ? kCentimetresPerInch : 1);
  return notes;
}

}  // namespace orvane
