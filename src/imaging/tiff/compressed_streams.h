#pragma once

#include <cstdint>
#include <span>

#include "foundation/Bytes.h"

/// Strips and tiles that are streams of a general-purpose compressor: LZW (TIFF 6.0 section 13),
/// Deflate (RFC 1950; TIFF compressions 8 and 32946, and inside PixarLog), Zstandard (RFC 8878) and
/// LZMA2 in an xz stream. libtiff stops in such a stream when the rows are full and never reads its
/// checksum. Here every stream is read to its end.

namespace orvane {

/// True for the TIFF compressions whose strips are such streams.
bool isCompressedStream(std::uint16_t compression);

/// True for LZW with its bits in the order of libtiff's first versions, which only libtiff reads.
bool isOldStyleLzw(std::uint16_t compression, ByteView stream);

/// Decompresses a whole stream of rows of `rowBytes` bytes. `to` takes its beginning, which must be
/// long enough. Some writers code the last strip of a page in full height, so more rows may follow;
/// their bytes are taken off `surplus`, which limits them. Throws Failure when data is missing,
/// damaged or contradicts its checksum, when there is more than `surplus` allows, and when LZW,
/// which has no checksum, ends within a row.
void decompress(std::uint16_t compression, ByteView stream, std::span<std::uint8_t> to,
                std::size_t rowBytes, std::uint64_t& surplus);

}  // namespace orvane
