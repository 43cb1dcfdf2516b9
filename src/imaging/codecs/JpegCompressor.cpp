#include "imaging/codecs/JpegCompressor.h"

#include <algorithm>
#include <array>
#include <jerror.h>
#include <new>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/codecs/jpeg_density.h"

namespace orvane {
namespace {

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

}  // namespace

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

}  // namespace orvane
