#include "imaging/codecs/libtiff_judge.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <tiffio.h>

#include "imaging/codecs/encoded_form.h"

namespace orvane::test {
namespace {

// A file in memory that libtiff can open by its path.
const char* memoryFile() {
  static const std::string path =
      "/proc/self/fd/" + std::to_string(memfd_create("judge.tif", MFD_CLOEXEC));
  return path.c_str();
}

int collectMessage(TIFF*, void* messages, const char*, const char* format, va_list arguments) {
  char text[512];
  vsnprintf(text, sizeof text, format, arguments);
  *static_cast<std::string*>(messages) += std::string(text) + "\n";
  return 1;
}

using TiffPointer = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

TiffPointer openTiff(const char* path, const char* mode, std::string& messages) {
  std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                           &TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), collectMessage, &messages);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), collectMessage, &messages);
  TiffPointer tiff(TIFFOpenExt(path, mode, options.get()), &TIFFClose);
  if (!tiff) throw std::runtime_error("libtiff: " + messages);
  return tiff;
}

void setPaletteTag(TIFF* tiff, const std::vector<std::uint16_t>& palette) {
  const std::size_t entries = palette.size() / 3;
  TIFFSetField(tiff, TIFFTAG_COLORMAP, palette.data(), palette.data() + entries,
               palette.data() + 2 * entries);
}

void setTags(TIFF* tiff, const EncodedImage& image) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, image.bitsPerSample);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.samplesPerPixel);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, image.compression);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, image.photometric);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, image.rowsPerStrip);
  if (image.extraSample) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &*image.extraSample);
  if (!image.palette.empty()) setPaletteTag(tiff, image.palette);
  if (image.horizontalPredictor) TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  if (image.photometric == Photometric::YCbCr) {
    TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, image.chromaSubsampling[0],
                 image.chromaSubsampling[1]);
  }
}

}  // namespace

void writeTiff(const std::filesystem::path& file, const EncodedImage& image, bool bigEndian) {
  std::string messages;
  const TiffPointer tiff = openTiff(file.c_str(), bigEndian ? "wb" : "wl", messages);
  setTags(tiff.get(), image);
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    Bytes strip = image.strips[i];
    TIFFWriteRawStrip(tiff.get(), static_cast<std::uint32_t>(i), strip.data(),
                      static_cast<tmsize_t>(strip.size()));
  }
}

LibtiffReading readWithLibtiff(const EncodedImage& image, bool bigEndian) {
  writeTiff(memoryFile(), image, bigEndian);
  LibtiffReading reading;
  const TiffPointer tiff = openTiff(memoryFile(), "r", reading.messages);
  Bytes strip(static_cast<std::size_t>(TIFFStripSize(tiff.get())));
  for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff.get()); ++i) {
    const tmsize_t size =
        TIFFReadEncodedStrip(tiff.get(), i, strip.data(), static_cast<tmsize_t>(strip.size()));
    reading.pixels.insert(reading.pixels.end(), strip.begin(),
                          strip.begin() + std::max<tmsize_t>(size, 0));
  }
  return reading;
}

std::vector<Bytes> encodeWithLibtiff(const Raster& raster, std::uint16_t compression,
                                     std::uint32_t rowsPerStrip) {
  std::string messages;
  EncodedImage image = encodedFormOf(raster);
  image.rowsPerStrip = rowsPerStrip;
  TiffPointer tiff = openTiff(memoryFile(), "w", messages);
  setTags(tiff.get(), image);
  TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, compression);
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    Bytes row(raster.row(y), raster.row(y) + raster.rowBytes());
    TIFFWriteScanline(tiff.get(), row.data(), y);
  }
  tiff.reset();
  tiff = openTiff(memoryFile(), "r", messages);
  std::vector<Bytes> strips;
  for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff.get()); ++i) {
    Bytes strip(static_cast<std::size_t>(TIFFRawStripSize(tiff.get(), i)));
    TIFFReadRawStrip(tiff.get(), i, strip.data(), static_cast<tmsize_t>(strip.size()));
    strips.push_back(std::move(strip));
  }
  return strips;
}

}  // namespace orvane::test
