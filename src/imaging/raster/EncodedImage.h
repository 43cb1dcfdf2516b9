#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// Dots per inch. A source that states none counts as 200.
struct Resolution {
  double x = 200.0;
  double y = 200.0;
  bool isStated = false;  ///< by the source; otherwise an output resolution may take its place
};

/// Compression of an image's strips, by its TIFF 6.0 tag value.
enum class Compression : std::uint16_t {
  None = 1,
  ModifiedHuffman = 2,
  Group3 = 3,
  Group4 = 4,
  Lzw = 5,
  Jpeg = 7
};

/// PhotometricInterpretation by its TIFF 6.0 tag value.
enum class Photometric : std::uint16_t {
  MinIsWhite = 0,
  MinIsBlack = 1,
  Rgb = 2,
  Palette = 3,
  Cmyk = 5,
  YCbCr = 6,
};

/// Byte order of the TIFF file that 16-bit samples go to.
enum class SampleOrder { LittleEndian, BigEndian };

/// A page as a container embeds it: encoded strips and what a reader must know of them. A page is
/// encoded once; containers only place its bytes. Group 4 strips have fill order 1 and no options;
/// a JPEG strip is a complete JPEG stream with its own tables.
struct EncodedImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t bitsPerSample = 1;
  std::uint16_t samplesPerPixel = 1;
  Photometric photometric = Photometric::MinIsWhite;
  Compression compression = Compression::None;
  bool horizontalPredictor = false;                      ///< TIFF 6.0 section 14, Lzw only
  std::optional<std::uint16_t> extraSample;              ///< TIFF 6.0 ExtraSamples value
  std::vector<std::uint16_t> palette;                    ///< TIFF 6.0 ColorMap
  std::array<std::uint16_t, 2> chromaSubsampling{1, 1};  ///< YCbCr only
  std::uint16_t orientation = 1;                         ///< TIFF 6.0 Orientation, for a TIFF file
  bool twoDimensional = false;                           ///< Group 3 only: T4Options bit 0
  std::uint32_t rowsPerStrip = 0;                        ///< the last strip may be shorter
  std::vector<Bytes> strips;
  Resolution resolution;
  Bytes iccProfile;  ///< describes the samples; not in the strips; empty: none
};

/// Numbers of rows, one for each strip of an image.
using StripRows = std::vector<std::uint32_t>;

/// The data of a page ends before its last row, and properly so: it says itself that no more rows
/// come.
struct EarlyEnd {
  std::uint32_t codedRows = 0;
  std::uint32_t promisedRows = 0;  ///< ImageLength
};

/// The early end that `codedRows` tell, if they do.
std::optional<EarlyEnd> earlyEndOf(const StripRows& codedRows, std::uint32_t promisedRows);

/// The state of a page's image data, as far as it was read.
struct DataState {
  std::optional<std::string> damage;  ///< why the data is damaged, in UTF-8
  std::optional<EarlyEnd> earlyEnd;   ///< where it ends properly before the last row

  /// Adds what a later reading found; where both found something, the later finding counts.
  void add(DataState later);
};

/// A value that was made of a page's image data, with the state of that data.
template <typename Value>
struct Examined {
  Value value;
  DataState data;
};

/// What an encoded image says of the raster it was made of: size, depth, photometric, palette and
/// extra sample; no strips yet. Throws Failure for a raster that is empty or contradicts itself.
EncodedImage encodedFormOf(const Raster& raster);

/// Throws Failure, naming `path`, unless the strips, the palette and the resolution of the image
/// fit together: what a container embeds, a reader must be able to take out.
void requireWholeImage(const std::wstring& path, const EncodedImage& image);

/// Throws Failure, naming `path`, unless `page`, from 1, is one of several pages of that file.
void requireDeletablePage(const std::wstring& path, std::int32_t page, std::uint64_t pageCount);

/// Bytes of one uncompressed row.
std::uint64_t plainRowBytes(const EncodedImage& image);

}  // namespace orvane
