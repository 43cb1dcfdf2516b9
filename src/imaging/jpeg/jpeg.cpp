#include "imaging/jpeg/jpeg.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <vector>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "foundation/OutputFile.h"
#include "imaging/jpeg/LibjpegErrors.h"
#include "imaging/jpeg/jpeg_header.h"
#include "imaging/jpeg/jpeg_tables.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/icc_profile.h"

namespace orvane {
namespace {

// One run of libjpeg's compressor. Its errors become Failure with libjpeg's text.
class JpegCompressor {
 public:
  JpegCompressor() { info_.err = &errors_.base; }
  JpegCompressor(const JpegCompressor&) = delete;
  JpegCompressor& operator=(const JpegCompressor&) = delete;
  ~JpegCompressor() {
    // After an error too, libjpeg hands the memory over that it has written to.
    if (output_ != nullptr) info_.dest->term_destination(&info_);
    std::free(output_);
    jpeg_destroy_compress(&info_);
  }

  // Encodes an 8-bit gray or RGB raster as a whole baseline stream. To be called once.
  Bytes compress(const Raster& raster, const SaveTables& tables, const Resolution& resolution) {
    if (!tryCompress(raster, tables, resolution)) errors_.fail();
    return Bytes(output_, output_ + outputSize_);
  }

 private:
  bool tryCompress(const Raster& raster, const SaveTables& tables, const Resolution& resolution);

  void setTable(int index, const RowOrderTable& table) {
    std::array<unsigned, 64> steps;
    std::ranges::copy(table.steps, steps.begin());
    jpeg_add_quant_table(&info_, index, steps.data(), 100, TRUE);
  }

  LibjpegErrors errors_;
  jpeg_compress_struct info_{};
  unsigned char* output_ = nullptr;  // of malloc
  unsigned long outputSize_ = 0;
};

constexpr JDIMENSION kRowsAtOnce = 16;

bool JpegCompressor::tryCompress(const Raster& raster, const SaveTables& tables,
                                 const Resolution& resolution) {
  if (setjmp(errors_.jump) != 0) return false;
  jpeg_create_compress(&info_);
  jpeg_mem_dest(&info_, &output_, &outputSize_);
  info_.image_width = raster.width;
  info_.image_height = raster.height;
  info_.input_components = raster.samplesPerPixel;
  info_.in_color_space = raster.samplesPerPixel == 3 ? JCS_RGB : JCS_GRAYSCALE;
  jpeg_set_defaults(&info_);  // YCbCr with 2 x 2 subsampling for RGB, the Annex K Huffman tables
  info_.dct_method = JDCT_ISLOW;
  info_.density_unit = 1;
  info_.X_density = jfifDensity(resolution.x);
  info_.Y_density = jfifDensity(resolution.y);
  setTable(0, tables.luminance);
  setTable(1, tables.chrominance);
  jpeg_start_compress(&info_, TRUE);
  while (info_.next_scanline < info_.image_height) {
    std::array<JSAMPROW, kRowsAtOnce> rows;
    const JDIMENSION count = std::min(kRowsAtOnce, info_.image_height - info_.next_scanline);
    for (JDIMENSION i = 0; i < count; ++i) {
      rows[i] = const_cast<JSAMPROW>(raster.row(info_.next_scanline + i));
    }
    jpeg_write_scanlines(&info_, rows.data(), count);
  }
  jpeg_finish_compress(&info_);
  return true;
}

// Appends APP2 segment `index` of `count` (ICC.1 annex B.4).
void appendSegment(Bytes& segments, ByteView part, std::size_t index, std::size_t count) {
  const std::size_t length = 2 + kIccSegmentName.size() + 2 + part.size();
  appendMarker(segments, kIccSegmentMarker);
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

// Where further segments may be inserted: after the start of the image and the JFIF segment, which
// has to be the first.
std::size_t placeOfSegments(ByteView stream) {
  constexpr std::uint64_t kAfterStart = 2;
  const MemorySource bytes(stream);
  JpegMarkers markers(bytes, kAfterStart);
  const bool isJfif =
      markers.takeMarker() == jpeg_marker::kApplication0 && markers.takeSegment().has_value();
  return std::min<std::size_t>(isJfif ? markers.position() : kAfterStart, stream.size());
}

}  // namespace

EncodedImage encodeJpeg(const Raster& raster, JpegFactors factors, const Resolution& resolution) {
  EncodedImage image = encodedFormOf(raster);
  const bool gray = raster.model == ColourModel::MinIsBlack && raster.samplesPerPixel == 1;
  const bool rgb = raster.model == ColourModel::Rgb && raster.samplesPerPixel == 3;
  if (raster.bitsPerSample != 8 || (!gray && !rgb)) {
    throw Failure("JPEG holds pages of 8-bit gray or RGB only");
  }
  image.compression = Compression::Jpeg;
  image.rowsPerStrip = raster.height;
  image.resolution = resolution;
  if (rgb) {
    image.photometric = Photometric::YCbCr;
    image.chromaSubsampling = {2, 2};
  }
  JpegCompressor compressor;
  image.strips.push_back(compressor.compress(raster, saveTables(factors), resolution));
  return image;
}

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
