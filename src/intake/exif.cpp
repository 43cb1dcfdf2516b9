#include "intake/exif.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "imaging/tiff/TiffForm.h"
#include "intake/resolution.h"

namespace orvane {
namespace {

constexpr std::string_view kName("Exif\0\0", 6);

// Exif data is a small classic TIFF file, whose first directory is about the picture.
class ExifDirectory {
 public:
  explicit ExifDirectory(ByteView tiff) : tiff_(tiff) {
    if (tiff.size() < 8) return;
    form_.bigEndian = tiff[0] == 'M';
    const std::uint64_t at = form_.get(tiff.data() + form_.firstLink(), form_.offsetBytes());
    if (!isInside(at, form_.countBytes())) return;
    first_ = at + form_.countBytes();
    count_ = form_.get(tiff.data() + at, form_.countBytes());
  }

  std::optional<std::uint64_t> shortValue(std::uint16_t tag) const {
    const std::optional<std::uint64_t> entry = find(tag, TiffType::Short);
    if (!entry) return std::nullopt;
    return form_.get(tiff_.data() + *entry + form_.valuePlace(), 2);
  }

  double rationalValue(std::uint16_t tag) const {
    const std::optional<std::uint64_t> entry = find(tag, TiffType::Rational);
    if (!entry) return 0;
    const std::uint64_t at = form_.get(tiff_.data() + *entry + form_.valuePlace(), 4);
    if (!isInside(at, 8)) return 0;
    const std::uint64_t denominator = form_.get(tiff_.data() + at + 4, 4);
    if (denominator == 0) return 0;
    return static_cast<double>(form_.get(tiff_.data() + at, 4)) / static_cast<double>(denominator);
  }

 private:
  bool isInside(std::uint64_t at, std::uint64_t length) const {
    return at <= tiff_.size() && length <= tiff_.size() - at;
  }

  // The position of the entry of a tag with one value of a type.
  std::optional<std::uint64_t> find(std::uint16_t tag, TiffType type) const {
    for (std::uint64_t i = 0; i < count_; ++i) {
      const std::uint64_t entry = first_ + i * form_.entryBytes();
      if (!isInside(entry, form_.entryBytes())) return std::nullopt;
      const std::uint8_t* const bytes = tiff_.data() + entry;
      if (form_.get(bytes, 2) != tag) continue;
      const bool fits = form_.get(bytes + 2, 2) == static_cast<std::uint16_t>(type) &&
                        form_.get(bytes + 4, 4) == 1;
      return fits ? std::optional(entry) : std::nullopt;
    }
    return std::nullopt;
  }

  ByteView tiff_;
  TiffForm form_;
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
