#include "imaging/tiff/tiff_profile.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "imaging/raster/jpeg_markers.h"

namespace orvane {
namespace {

constexpr wchar_t kCannotBeRead[] = L"无法读取";
constexpr wchar_t kPartsMissing[] = L"JPEG数据中的分段不完整";

/// Puts together a profile that is spread over the APP2 segments of a JPEG stream.
class SegmentedProfile {
 public:
  void add(ByteView segment) {
    if (segment.size() < kIccSegmentName.size() + 2 ||
        !std::equal(kIccSegmentName.begin(), kIccSegmentName.end(), segment.begin())) {
      return;  // APP2 of another kind
    }
    const std::size_t number = segment[kIccSegmentName.size()];
    const std::size_t count = segment[kIccSegmentName.size() + 1];
    if (parts_.empty()) parts_.resize(std::max<std::size_t>(count, 1));
    const bool expected = count == parts_.size() && number >= 1 && number <= count;
    if (!expected || !parts_[number - 1].empty()) {
      broken_ = true;
      return;
    }
    const ByteView part = segment.subspan(kIccSegmentName.size() + 2);
    parts_[number - 1].assign(part.begin(), part.end());
  }

  bool isThere() const { return !parts_.empty(); }

  /// Nothing when a segment is missing, empty or there twice.
  std::optional<Bytes> whole() const {
    if (broken_ || std::ranges::any_of(parts_, &Bytes::empty)) return std::nullopt;
    Bytes profile;
    for (const Bytes& part : parts_) profile.insert(profile.end(), part.begin(), part.end());
    return profile;
  }

 private:
  std::vector<Bytes> parts_;
  bool broken_ = false;
};

struct Range {
  std::uint64_t from = 0;
  std::uint64_t length = 0;
};

// The range of the page's first JPEG stream; empty for a page without one.
Range firstJpegStream(TIFF* tiff, const TiffLayout& layout) {
  Range stream;
  if (layout.compression == COMPRESSION_JPEG) {
    stream = {TIFFGetStrileOffset(tiff, 0), TIFFGetStrileByteCount(tiff, 0)};
  } else if (layout.compression == COMPRESSION_OJPEG) {
    TIFFGetField(tiff, TIFFTAG_JPEGIFOFFSET, &stream.from);
    TIFFGetField(tiff, TIFFTAG_JPEGIFBYTECOUNT, &stream.length);
  }
  return stream;
}

// Walks the marker segments before the first scan. The profile ends at anything else, which the
// decoder will report.
SegmentedProfile readSegments(const ImageFile& file, Range stream) {
  constexpr int kMostSegments = 2000;  // a hostile stream could have millions
  SegmentedProfile profile;
  JpegMarkers markers(file, stream.from + 2);  // after the start of the image
  const std::uint64_t end = std::min(stream.from + stream.length, file.size());
  for (int i = 0; i < kMostSegments && markers.position() < end; ++i) {
    const std::optional<std::uint8_t> marker = markers.takeMarker();
    if (!marker || marker == jpeg_marker::kStartOfScan) break;
    const std::optional<JpegSegment> segment = markers.takeSegment();
    if (!segment) break;
    if (marker != kIccSegmentMarker) continue;
    Bytes content(segment->length);
    content.resize(file.readAt(segment->at, content));
    profile.add(content);
  }
  return profile;
}

PageProfile checked(ByteView profile, const TiffLayout& layout) {
  std::wstring misfit = iccMisfit(profile, static_cast<Photometric>(layout.photometric));
  if (!misfit.empty()) return {{}, std::move(misfit)};
  return {{profile.begin(), profile.end()}, {}};
}

}  // namespace

PageProfile readIccProfile(const TiffHandle& tiff, const TiffLayout& layout,
                           const std::vector<TiffEntry>& entries) {
  std::uint32_t size = 0;
  const std::uint8_t* bytes = nullptr;
  if (TIFFGetField(tiff.get(), TIFFTAG_ICCPROFILE, &size, &bytes) == 1) {
    return checked({bytes, size}, layout);
  }
  // A field that libtiff cannot read is not there for it.
  const TiffEntry* field = findEntry(entries, tag::kIccProfile);
  if (field != nullptr && field->count != 0) return {{}, kCannotBeRead};
  const Range stream = firstJpegStream(tiff.get(), layout);
  if (stream.length == 0) return {};
  const SegmentedProfile segments = readSegments(tiff.file(), stream);
  if (!segments.isThere()) return {};
  const std::optional<Bytes> profile = segments.whole();
  return profile ? checked(*profile, layout) : PageProfile{{}, kPartsMissing};
}

}  // namespace orvane
