#include "imaging/jpeg/jpeg.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>
#include <new>
#include <utility>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "imaging/jpeg/jpeg_header.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {
namespace {

/// One run of libjpeg's compressor. Its errors become Failure with libjpeg's text.
class JpegCompressor {
 public:
  JpegCompressor();
  JpegCompressor(const JpegCompressor&) = delete;
  JpegCompressor& operator=(const JpegCompressor&) = delete;
  ~JpegCompressor();

  /// Encodes an 8-bit gray or RGB raster as a whole baseline stream. To be called once.
  Bytes compress(const Raster& raster, const JpegTables& tables, const Resolution& resolution);

 private:
  struct Errors {
    jpeg_error_mgr base;  // first, so that libjpeg's pointer to it is a pointer to this
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];
  };

  struct Destination {
    jpeg_destination_mgr base;  // first, as above
    JpegCompressor* owner;
  };

  [[noreturn]] static void leave(j_common_ptr info);
  static void beginOutput(j_compress_ptr info);
  static boolean growOutput(j_compress_ptr info);
  static void endOutput(j_compress_ptr info);

  bool tryCompress(const Raster& raster, const JpegTables& tables, const Resolution& resolution);
  void setTable(int index, const QuantisationTable& table);

  Errors errors_{};
  jpeg_compress_struct info_{};
  Destination destination_{};
  Bytes output_;
};

constexpr JDIMENSION kRowsAtOnce = 16;

constexpr std::size_t kFirstOutput = std::size_t{1} << 16;

void silence(j_common_ptr, int) {}

bool tryResize(Bytes& bytes, std::size_t size) {
  try {
    bytes.resize(size);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

JpegCompressor::JpegCompressor() {
  info_.err = jpeg_std_error(&errors_.base);
  errors_.base.error_exit = leave;
  errors_.base.emit_message = silence;
  destination_.base.init_destination = beginOutput;
  destination_.base.empty_output_buffer = growOutput;
  destination_.base.term_destination = endOutput;
  destination_.owner = this;
}

JpegCompressor::~JpegCompressor() {
  jpeg_destroy_compress(&info_);
}

Bytes JpegCompressor::compress(const Raster& raster, const JpegTables& tables,
                               const Resolution& resolution) {
  if (!tryCompress(raster, tables, resolution)) {
    if (errors_.base.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
    throw Failure(errors_.text);
  }
  return std::move(output_);
}

// libjpeg is C and has to be left by a jump; nothing that it skips may need a destructor.
void JpegCompressor::leave(j_common_ptr info) {
  auto* errors = reinterpret_cast<Errors*>(info->err);
  errors->base.format_message(info, errors->text);
  std::longjmp(errors->jump, 1);
}

void JpegCompressor::beginOutput(j_compress_ptr info) {
  growOutput(info);
}

// Called when the output is full, however much of it libjpeg says is free.
boolean JpegCompressor::growOutput(j_compress_ptr info) {
  auto* destination = reinterpret_cast<Destination*>(info->dest);
  Bytes& output = destination->owner->output_;
  const std::size_t used = output.size();
  if (!tryResize(output, std::max(2 * used, kFirstOutput))) ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
  destination->base.next_output_byte = output.data() + used;
  destination->base.free_in_buffer = output.size() - used;
  return TRUE;
}

void JpegCompressor::endOutput(j_compress_ptr info) {
  auto* destination = reinterpret_cast<Destination*>(info->dest);
  Bytes& output = destination->owner->output_;
  output.resize(output.size() - destination->base.free_in_buffer);
}

bool JpegCompressor::tryCompress(const Raster& raster, const JpegTables& tables,
                                 const Resolution& resolution) {
  if (setjmp(errors_.jump) != 0) return false;
  jpeg_create_compress(&info_);
  info_.dest = &destination_.base;
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

void JpegCompressor::setTable(int index, const QuantisationTable& table) {
  std::array<unsigned, 64> entries;
  std::copy(table.begin(), table.end(), entries.begin());
  jpeg_add_quant_table(&info_, index, entries.data(), 100, TRUE);
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
  image.strips.push_back(compressor.compress(raster, quantisationTables(factors), resolution));
  return image;
}

}  // namespace orvane
