#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/TiffForm.h"

namespace orvane {

/// A directory under construction: tags with their values, in any order.
class TiffDirectory {
 public:
  explicit TiffDirectory(TiffForm form) : form_(form) {}

  void addShorts(std::uint16_t tag, std::span<const std::uint16_t> values);
  void addShort(std::uint16_t tag, std::uint16_t value) { addShorts(tag, std::span(&value, 1)); }
  void addLong(std::uint16_t tag, std::uint32_t value);
  /// Offsets or sizes of data in the file: LONG in a classic file, LONG8 in BigTIFF.
  void addSizes(std::uint16_t tag, std::span<const std::uint64_t> values);
  /// The nearest fractions; common resolutions are exact (203.2 as 1016/5).
  void addRationals(std::uint16_t tag, std::span<const double> values);
  void addRational(std::uint16_t tag, double value) { addRationals(tag, std::span(&value, 1)); }
  void addText(std::uint16_t tag, std::string_view text);
  /// Opaque bytes (UNDEFINED).
  void addBytes(std::uint16_t tag, ByteView bytes);

  /// The directory for a place at `offset`: sorted entries, no next directory, and after them the
  /// values that do not fit in an entry, each at an even offset.
  Bytes bytes(std::uint64_t offset) const;
  /// Position of the offset of the next directory, from the beginning of the directory.
  std::uint64_t linkPlace() const;

 private:
  struct Entry {
    TiffType type;
    std::uint64_t count;
    Bytes value;
  };
  Bytes& add(std::uint16_t tag, TiffType type, std::uint64_t count);

  TiffForm form_;
  std::map<std::uint16_t, Entry> entries_;
};

/// TIFF 6.0 NewSubfileType of a page.
enum class TiffSubfile : std::uint32_t { SingleImage = 0, PageOfMany = 2 };

/// A page laid out for a place at the end of a TIFF file: strips, then the directory, all at even
/// offsets. `parts` points into the image and into `directory`.
struct TiffPagePlan {
  std::vector<ByteView> parts;  ///< what is written from the planned offset on
  Bytes directory;
  std::uint64_t directoryOffset = 0;
  std::uint64_t nextLink = 0;  ///< offset of the field that links to the next directory
};

/// Plans page `number` (from 0) for `offset`. Throws Failure, naming `path`, for an image that does
/// not fit together and for one that would pass 4 GiB in a classic TIFF.
TiffPagePlan planTiffPage(const std::wstring& path, TiffForm form, std::uint64_t offset,
                          const EncodedImage& image, TiffSubfile subfile, std::uint32_t number);

}  // namespace orvane
