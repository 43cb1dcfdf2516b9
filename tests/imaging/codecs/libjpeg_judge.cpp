#include "imaging/codecs/libjpeg_judge.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>

namespace orvane::test {
namespace {

struct Judge {
  jpeg_error_mgr errors;
  std::jmp_buf jump;
  LibjpegReading* reading;
};

Judge& judgeOf(j_common_ptr info) {
  return *reinterpret_cast<Judge*>(info->err);
}

void note(j_common_ptr info) {
  char text[JMSG_LENGTH_MAX];
  info->err->format_message(info, text);
  judgeOf(info).reading->messages += std::string(text) + "\n";
}

void noteWarning(j_common_ptr info, int level) {
  if (level < 0) note(info);
}

void leave(j_common_ptr info) {
  note(info);
  std::longjmp(judgeOf(info).jump, 1);
}

void noteSteps(jpeg_decompress_struct& info, LibjpegReading& reading) {
  for (int i = 0; i < info.num_components; ++i) {
    auto& steps = reading.steps.emplace_back();
    std::copy_n(info.comp_info[i].quant_table->quantval, steps.size(), steps.begin());
  }
}

// Holds nothing that a jump must not skip.
void read(jpeg_decompress_struct& info, Judge& judge, const Bytes& stream) {
  if (setjmp(judge.jump) != 0) return;
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, stream.data(), stream.size());
  jpeg_read_header(&info, TRUE);
  info.do_fancy_upsampling = FALSE;
  jpeg_start_decompress(&info);
  Raster& pixels = judge.reading->pixels;
  pixels.width = info.output_width;
  pixels.height = info.output_height;
  pixels.bitsPerSample = 8;
  pixels.samplesPerPixel = static_cast<std::uint16_t>(info.output_components);
  pixels.model = info.output_components == 3 ? ColourModel::Rgb : ColourModel::MinIsBlack;
  pixels.pixels.resize(pixels.rowBytes() * pixels.height);
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = pixels.row(info.output_scanline);
    jpeg_read_scanlines(&info, &row, 1);
  }
  noteSteps(info, *judge.reading);
  jpeg_finish_decompress(&info);
}

}  // namespace

LibjpegReading readWithLibjpeg(const Bytes& stream) {
  LibjpegReading reading;
  Judge judge{};
  jpeg_decompress_struct info{};
  info.err = jpeg_std_error(&judge.errors);
  judge.errors.error_exit = leave;
  judge.errors.emit_message = noteWarning;
  judge.reading = &reading;
  read(info, judge, stream);
  jpeg_destroy_decompress(&info);
  return reading;
}

}  // namespace orvane::test
