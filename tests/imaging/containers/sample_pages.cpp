#include "imaging/containers/sample_pages.h"

#include <memory>
#include <tiffio.h>

#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

EncodedImage takePage(TIFF* tiff) {
  const auto shortField = [&](std::uint32_t tag) {
    std::uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
  };
  EncodedImage image;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &image.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &image.height);
  TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &image.rowsPerStrip);
  image.bitsPerSample = shortField(TIFFTAG_BITSPERSAMPLE);
  image.samplesPerPixel = shortField(TIFFTAG_SAMPLESPERPIXEL);
  image.photometric = static_cast<Photometric>(shortField(TIFFTAG_PHOTOMETRIC));
  image.compression = static_cast<Compression>(shortField(TIFFTAG_COMPRESSION));
  image.horizontalPredictor =
      image.compression == Compression::Lzw && shortField(TIFFTAG_PREDICTOR) == 2;
  std::uint16_t* parts[3] = {};
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &parts[0], &parts[1], &parts[2]) == 1) {
    for (const std::uint16_t* part : parts) {
      image.palette.insert(image.palette.end(), part, part + (1 << image.bitsPerSample));
    }
  }
  std::uint16_t extraCount = 0;
  std::uint16_t* extras = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extraCount, &extras) == 1 && extraCount == 1) {
    image.extraSample = extras[0];
  }
  const bool tiled = TIFFIsTiled(tiff) != 0;
  const std::uint32_t count = tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  for (std::uint32_t i = 0; i < count; ++i) {
    Bytes strip(TIFFGetStrileByteCount(tiff, i));
    const auto size = static_cast<tmsize_t>(strip.size());
    (tiled ? TIFFReadRawTile : TIFFReadRawStrip)(tiff, i, strip.data(), size);
    image.strips.push_back(strip);
  }
  return image;
}

SampleDocument makeJpeg(const std::filesystem::path& folder, const std::string& name, bool colour) {
  constexpr int kSide = 61;
  std::string pixels = (colour ? "P6 " : "P5 ") + std::to_string(kSide) + " 61 255\n";
  for (int i = 0; i < kSide * kSide; ++i) {
    const int x = i % kSide;
    const int y = i / kSide;
    pixels += static_cast<char>(x * 3);
    if (colour) pixels.append({static_cast<char>(y * 3), static_cast<char>(x + y)});
  }
  const std::filesystem::path picture = folder / (name + ".pnm");
  const std::filesystem::path stream = folder / (name + ".jpg");
  writeBytes(picture, pixels);
  outputOf("cjpeg -quality 90 -outfile " + quoted(stream) + " " + quoted(picture));
  const std::string bytes = readBytes(stream);

  EncodedImage image;
  image.width = image.height = image.rowsPerStrip = kSide;
  image.bitsPerSample = 8;
  image.samplesPerPixel = colour ? 3 : 1;
  image.photometric = colour ? Photometric::YCbCr : Photometric::MinIsBlack;
  image.compression = Compression::Jpeg;
  if (colour) image.chromaSubsampling = {2, 2};
  image.strips.emplace_back(bytes.begin(), bytes.end());
  image.resolution = {203.2, 196};
  return {name, {image}, stream};
}

}  // namespace

std::vector<EncodedImage> takePages(const std::filesystem::path& path) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(path.c_str(), "r"), TIFFClose);
  std::vector<EncodedImage> pages;
  do {
    pages.push_back(takePage(tiff.get()));
  } while (TIFFReadDirectory(tiff.get()) == 1);
  return pages;
}

SampleDocument makeDocument(const std::filesystem::path& folder, const std::string& name,
                            const TiffKind& kind) {
  const std::filesystem::path reference = folder / (name + ".reference.tif");
  writeTiff(reference, kind, 3);
  return {name, takePages(reference), reference};
}

std::vector<SampleDocument> makeDocuments(const std::filesystem::path& folder) {
  constexpr std::uint16_t kGray = PHOTOMETRIC_MINISBLACK;
  constexpr std::uint16_t kWhite = PHOTOMETRIC_MINISWHITE;
  constexpr std::uint16_t kRgb = PHOTOMETRIC_RGB;
  struct Row {
    std::string name;
    std::uint16_t bits, samples, photometric, compression;
    std::uint32_t rowsPerStrip = 11;
  };
  std::vector<SampleDocument> documents;
  for (const Row& row :
       {Row{"group4", 1, 1, kWhite, COMPRESSION_CCITTFAX4, 45},
        Row{"group4 black", 1, 1, kGray, COMPRESSION_CCITTFAX4, 45},
        Row{"group4 strips", 1, 1, kWhite, COMPRESSION_CCITTFAX4},
        Row{"bilevel", 1, 1, kWhite, COMPRESSION_NONE}, Row{"gray4", 4, 1, kGray, COMPRESSION_NONE},
        Row{"gray8", 8, 1, kGray, COMPRESSION_NONE}, Row{"white8", 8, 1, kWhite, COMPRESSION_NONE},
        Row{"gray16", 16, 1, kGray, COMPRESSION_NONE},
        Row{"palette4", 4, 1, PHOTOMETRIC_PALETTE, COMPRESSION_NONE},
        Row{"palette8", 8, 1, PHOTOMETRIC_PALETTE, COMPRESSION_NONE},
        Row{"rgb8", 8, 3, kRgb, COMPRESSION_NONE}, Row{"rgb8 lzw", 8, 3, kRgb, COMPRESSION_LZW},
        Row{"rgba8", 8, 4, kRgb, COMPRESSION_NONE},
        Row{"cmyk8", 8, 4, PHOTOMETRIC_SEPARATED, COMPRESSION_NONE}}) {
    TiffKind kind{row.bits, row.samples, row.photometric, row.compression, row.rowsPerStrip};
    if (row.compression == COMPRESSION_LZW) kind.predictor = PREDICTOR_HORIZONTAL;
    if (row.photometric == kRgb && row.samples == 4) kind.extras = {EXTRASAMPLE_UNASSALPHA};
    documents.push_back(makeDocument(folder, row.name, kind));
  }
  documents.push_back(makeJpeg(folder, "jpeg gray", false));
  documents.push_back(makeJpeg(folder, "jpeg colour", true));
  return documents;
}

EncodedImage plainPage(unsigned seed) {
  EncodedImage image;
  image.width = 24;
  image.height = image.rowsPerStrip = 5;
  image.bitsPerSample = 8;
  image.photometric = Photometric::MinIsBlack;
  Bytes pixels(image.width * image.height);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<std::uint8_t>(i * (seed + 1) + seed);
  }
  image.strips.push_back(pixels);
  return image;
}

}  // namespace orvane::test
