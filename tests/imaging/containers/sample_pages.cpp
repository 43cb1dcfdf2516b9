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
  const TiffKind bilevel{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE};
  TiffKind group4 = bilevel;
  group4.compression = COMPRESSION_CCITTFAX4;
  group4.rowsPerStrip = 45;
  TiffKind group4Black = group4;
  group4Black.photometric = PHOTOMETRIC_MINISBLACK;
  TiffKind group4Strips = group4;
  group4Strips.rowsPerStrip = 11;
  const TiffKind rgb{.samples = 3, .photometric = PHOTOMETRIC_RGB};
  TiffKind rgbLzw = rgb;
  rgbLzw.compression = COMPRESSION_LZW;
  rgbLzw.predictor = PREDICTOR_HORIZONTAL;
  TiffKind rgba = rgb;
  rgba.samples = 4;
  rgba.extras = {EXTRASAMPLE_UNASSALPHA};

  std::vector<SampleDocument> documents;
  const auto add = [&](const std::string& name, const TiffKind& kind) {
    documents.push_back(makeDocument(folder, name, kind));
  };
  add("group4", group4);
  add("group4 black", group4Black);
  add("group4 strips", group4Strips);
  add("bilevel", bilevel);
  add("gray4", {.bits = 4});
  add("gray8", {.bits = 8});
  add("white8", {.bits = 8, .photometric = PHOTOMETRIC_MINISWHITE});
  add("gray16", {.bits = 16});
  add("palette4", {.bits = 4, .photometric = PHOTOMETRIC_PALETTE});
  add("palette8", {.bits = 8, .photometric = PHOTOMETRIC_PALETTE});
  add("rgb8", rgb);
  add("rgb8 lzw", rgbLzw);
  add("rgba8", rgba);
  add("cmyk8", {.samples = 4, .photometric = PHOTOMETRIC_SEPARATED});
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
