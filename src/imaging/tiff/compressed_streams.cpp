#include "imaging/tiff/compressed_streams.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <libdeflate.h>
#include <lzma.h>
#include <memory>
#include <new>
#include <string>
#include <tiff.h>
#include <utility>
#include <zstd.h>

#include "foundation/Failure.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

constexpr char kTooShort[] = "the compressed data ends before its rows";
constexpr char kTooLong[] = "the compressed data goes on after its rows";

void takeOff(std::uint64_t& surplus, std::uint64_t bytes) {
  if (bytes > surplus) throw Failure(kTooLong);
  surplus -= bytes;
}

struct DecompressorDeleter {
  void operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
  }
};

// libdeflate takes a stream in one piece, so surplus data needs a buffer for the whole. It grows
// step by step, because the surplus that is allowed can be as large as the page.
void inflateStream(ByteView stream, std::span<std::uint8_t> to, std::uint64_t& surplus) {
  const std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> decompressor(
      libdeflate_alloc_decompressor());
  if (!decompressor) throw std::bad_alloc();
  std::size_t size = 0;
  const auto inflateTo = [&](std::uint8_t* buffer, std::size_t capacity) {
    return libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), buffer,
                                      capacity, &size);
  };
  libdeflate_result result = inflateTo(to.data(), to.size());
  for (std::uint64_t room = to.size(), most = to.size() + surplus;
       result == LIBDEFLATE_INSUFFICIENT_SPACE;) {
    if (room == most) throw Failure(kTooLong);
    room = std::min(most, room * 4);
    const auto whole = std::make_unique_for_overwrite<std::uint8_t[]>(room);
    result = inflateTo(whole.get(), room);
    if (result == LIBDEFLATE_SUCCESS) std::copy_n(whole.get(), to.size(), to.data());
  }
  if (result != LIBDEFLATE_SUCCESS) {
    throw Failure("the Deflate data is damaged or contradicts its checksum");
  }
  if (size < to.size()) throw Failure(kTooShort);
  takeOff(surplus, size - to.size());
}

// Runs a decoder to the end of its stream. `step` consumes from the front of both ranges, and
// returns true at the end of the stream.
template <typename Step>
void readToEnd(Step step, ByteView stream, std::span<std::uint8_t> to, std::uint64_t& surplus) {
  Bytes rest;  // takes what follows the rows
  std::span<std::uint8_t> room = to;
  for (;;) {
    if (room.empty()) {
      rest.resize(64 << 10);
      room = rest;
    }
    const std::size_t streamBefore = stream.size(), roomBefore = room.size();
    const bool ended = step(stream, room);
    if (!rest.empty()) takeOff(surplus, roomBefore - room.size());
    if (ended) break;
    if (stream.size() == streamBefore && room.size() == roomBefore) throw Failure(kTooShort);
  }
  if (rest.empty() && !room.empty()) throw Failure(kTooShort);
}

struct ZstandardDeleter {
  void operator()(ZSTD_DCtx* decoder) const { ZSTD_freeDCtx(decoder); }
};

void expandZstandard(ByteView stream, std::span<std::uint8_t> to, std::uint64_t& surplus) {
  const std::unique_ptr<ZSTD_DCtx, ZstandardDeleter> decoder(ZSTD_createDCtx());
  if (!decoder) throw std::bad_alloc();
  const auto step = [&](ByteView& from, std::span<std::uint8_t>& room) {
    ZSTD_inBuffer input{from.data(), from.size(), 0};
    ZSTD_outBuffer output{room.data(), room.size(), 0};
    const std::size_t result = ZSTD_decompressStream(decoder.get(), &output, &input);
    if (ZSTD_isError(result) != 0) {
      throw Failure(std::string("Zstandard: ") + ZSTD_getErrorName(result));
    }
    from = from.subspan(input.pos);
    room = room.subspan(output.pos);
    return result == 0;
  };
  readToEnd(step, stream, to, surplus);
}

void expandLzma(ByteView stream, std::span<std::uint8_t> to, std::uint64_t& surplus) {
  constexpr std::uint64_t kMostMemory = 256 << 20;  // a stream states what its decoder needs
  lzma_stream coder = LZMA_STREAM_INIT;
  const std::unique_ptr<lzma_stream, decltype(&lzma_end)> owner(&coder, &lzma_end);
  if (lzma_stream_decoder(&coder, kMostMemory, 0) != LZMA_OK) throw std::bad_alloc();
  const auto step = [&](ByteView& from, std::span<std::uint8_t>& room) {
    coder.next_in = from.data();
    coder.avail_in = from.size();
    coder.next_out = room.data();
    coder.avail_out = room.size();
    const lzma_ret result = lzma_code(&coder, LZMA_FINISH);
    if (result == LZMA_MEM_ERROR) throw std::bad_alloc();
    if (result != LZMA_OK && result != LZMA_STREAM_END && result != LZMA_BUF_ERROR) {
      throw Failure("the LZMA data is damaged or contradicts its checksum, code " +
                    std::to_string(result));
    }
    from = from.last(coder.avail_in);
    room = room.last(coder.avail_out);
    return result == LZMA_STREAM_END;
  };
  readToEnd(step, stream, to, surplus);
}

// Copies from earlier in the output. A string can overlap with its copy.
void copyString(const std::uint8_t* from, std::uint8_t* to, std::size_t count, std::size_t room) {
  constexpr std::size_t kChunk = 16;
  if (to - from >= std::ptrdiff_t{kChunk} && room >= count + kChunk) {
    for (std::size_t i = 0; i < count; i += kChunk) std::memcpy(to + i, from + i, kChunk);
  } else {
    for (std::size_t i = 0; i < count; ++i) to[i] = from[i];
  }
}

/// The codes of LZW that stand for strings. Such a string is in the output where it was made, so
/// the table holds its place and length. Codes get longer one code early.
class LzwTable {
 public:
  static constexpr unsigned kClear = 256;
  static constexpr unsigned kEnd = 257;

  struct String {
    std::uint32_t at = 0;
    std::uint32_t length = 0;
  };

  void clear() {
    next_ = kFirstFree;
    codeBits_ = kFewestBits;
  }

  unsigned codeBits() const { return codeBits_; }
  bool isNext(unsigned code) const { return code == next_; }
  bool has(unsigned code) const { return code >= kFirstFree && code < next_; }
  const String& operator[](unsigned code) const { return strings_[code]; }

  void add(const String& string) {
    if (next_ == strings_.size()) return;
    strings_[next_++] = string;
    if (next_ + 1 == 1U << codeBits_ && codeBits_ < kMostBits) ++codeBits_;
  }

 private:
  static constexpr unsigned kFirstFree = 258;
  static constexpr unsigned kFewestBits = 9, kMostBits = 12;

  std::array<String, 1U << kMostBits> strings_;
  unsigned next_ = kFirstFree;
  unsigned codeBits_ = kFewestBits;
};

// There is no checksum; but a code that became another often has a string of another length, so
// that the end comes within a row. Streams without an end code go on with bytes that mean nothing.
void expandLzw(ByteView stream, std::span<std::uint8_t> to, std::size_t rowBytes,
               std::uint64_t& surplus) {
  LzwTable table;
  BitReader bits(stream);
  const std::uint64_t most = to.size() + surplus;
  std::uint64_t size = 0;  // of all strings so far
  LzwTable::String last;   // of length 0 at the beginning and after a clear
  bool ended = false;
  while (size <= most) {
    const unsigned codeBits = table.codeBits();
    bits.refill();
    const auto code = static_cast<unsigned>(bits.bits() >> (64 - codeBits));
    bits.skip(codeBits);
    ended = code == LzwTable::kEnd && !bits.overran();
    if (ended || bits.overran()) break;
    if (code == LzwTable::kClear) {
      table.clear();
      last = {};
      continue;
    }
    LzwTable::String known{0, 1};
    if (code > LzwTable::kEnd) {
      const bool repeats = table.isNext(code) && last.length != 0;  // and its own first byte again
      if (!repeats && !table.has(code)) break;
      known = repeats ? LzwTable::String{last.at, last.length + 1} : table[code];
    }
    if (size < to.size()) {
      const std::size_t room = to.size() - size;
      const std::size_t count = std::min<std::size_t>(known.length, room);
      if (code < LzwTable::kClear) {
        to[size] = static_cast<std::uint8_t>(code);
      } else {
        copyString(to.data() + known.at, to.data() + size, count, room);
      }
    }
    if (last.length != 0) table.add({last.at, last.length + 1});
    last = {static_cast<std::uint32_t>(size), known.length};
    size += known.length;
  }
  if (size < to.size()) throw Failure("the LZW data is damaged or ends before its rows");
  if (!ended) return;
  if ((size - to.size()) % rowBytes != 0) throw Failure("the LZW data ends within a row");
  takeOff(surplus, size - to.size());
}

}  // namespace

bool isCompressedStream(std::uint16_t compression) {
  return compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE ||
         compression == COMPRESSION_DEFLATE || compression == COMPRESSION_PIXARLOG ||
         compression == COMPRESSION_ZSTD || compression == COMPRESSION_LZMA;
}

// Such a stream begins with a clear code from the lowest bit on.
bool isOldStyleLzw(std::uint16_t compression, ByteView stream) {
  return compression == COMPRESSION_LZW && stream.size() >= 2 && stream[0] == 0 &&
         (stream[1] & 1) != 0;
}

void decompress(std::uint16_t compression, ByteView stream, std::span<std::uint8_t> to,
                std::size_t rowBytes, std::uint64_t& surplus) {
  switch (compression) {
    case COMPRESSION_LZW:
      return expandLzw(stream, to, rowBytes, surplus);
    case COMPRESSION_ZSTD:
      return expandZstandard(stream, to, surplus);
    case COMPRESSION_LZMA:
      return expandLzma(stream, to, surplus);
    default:
      return inflateStream(stream, to, surplus);
  }
}

}  // namespace orvane
