#pragma once

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>

#include "imaging/codecs/jpeg_quantisation.h"
#include "imaging/page/Bytes.h"
#include "imaging/page/Raster.h"
#include "imaging/page/Resolution.h"

namespace orvane {

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

}  // namespace orvane
