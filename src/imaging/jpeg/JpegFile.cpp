#include "imaging/jpeg/JpegFile.h"

#include <algorithm>
#include <vector>

#include "foundation/OutputFile.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/icc_profile.h"

namespace orvane {
namespace {

// Appends APP2 segment `index` of `count` (ICC.1 annex B.4).
void appendSegment(Bytes& segments, ByteView part, std::size_t index, std::size_t count) {
  const std::size_t length = 2 + kIccSegmentName.size() + 2 + part.size();
  segments.push_back(0xFF);
  segments.push_back(kIccSegmentMarker);
  segments.push_back(static_cast<std::uint8_t>(length >> 8));
  segments.push_back(static_cast<std::uint8_t>(length));
  segments.insert(segments.end(), kIccSegmentName.begin(), kIccSegmentName.end());
  segments.push_back(static_cast<std::uint8_t>(index + 1));
  segments.push_back(static_cast<std::uint8_t>(count));
  segments.insert(segments.end(), part.begin(), part.end());
}

Bytes profileSegments(ByteView profile) {
  const std::size_t count = (profile.size() + kMostIccSegmentBytes - 1) / kMostIccSegmentBytes;
  Bytes segments;
  for (std::size_t i = 0; i < count; ++i) {
    const ByteView rest = profile.subspan(i * kMostIccSegmentBytes);
    appendSegment(segments, rest.first(std::min(rest.size(), kMostIccSegmentBytes)), i, count);
  }
  return segments;
}

// Where further segments may stand: after the start of the image and the JFIF segment, which has
// to be the first.
std::size_t placeOfSegments(ByteView stream) {
  const bool isJfif = stream.size() > 6 && stream[2] == 0xFF && stream[3] == 0xE0;
  const std::size_t place = isJfif ? 4 + (std::size_t{stream[4]} << 8 | stream[5]) : 2;
  return std::min(place, stream.size());
}

}  // namespace

void writeJpegFile(const std::wstring& path, const EncodedImage& image) {
  requireWholeImage(path, image);
  if (image.compression != Compression::Jpeg || image.strips.size() != 1) {
    throw fileFailure(path, "the image is not one JPEG stream");
  }
  const ByteView stream = image.strips.front();
  const std::size_t place = placeOfSegments(stream);
  const Bytes profile = profileSegments(image.iccProfile);
  const std::vector<ByteView> parts{stream.first(place), profile, stream.subspan(place)};
  OutputFile file = OutputFile::createAnew(path);
  file.write(0, parts);
  file.close();
}

}  // namespace orvane
