#pragma once

#include "imaging/codecs/jpeg_header.h"
#include "imaging/page/Resolution.h"

namespace orvane {

/// The head of a JFIF stream, up to its entropy-coded data: the frame, scan and tables of `header`.
Bytes jpegHead(const JpegHeader& header, const Resolution& resolution);

}  // namespace orvane
