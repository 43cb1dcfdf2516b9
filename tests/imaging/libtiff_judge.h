#pragma once

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <tiffio.h>

#include "imaging/raster/EncodedImage.h"

/// Encoded images as TIFF files made with libtiff, and what libtiff makes of them.
namespace orvane::test {

struct LibtiffReading {
  Bytes pixels;          ///< of all strips, 16-bit samples in the machine's order
  std::string messages;  ///< warnings and errors, one a line
};

// A file in memory that libtiff can open by its path.
inline const char* memoryFile() {
  static const std::string path =
      "/proc/self/fd/" + std::to_string(memfd_create("judge.tif", MFD_CLOEXEC));
  return path.c_str();
}

inline int collectMessage(TIFF*, void* messages, const char*, const char* format,
                          va_list arguments) {
  char text[512];
  vsnprintf(text, sizeof text, format, arguments);
  *static_cast<std::string*>(messages) += std::string(text) + "\n";
  return 1;
}

using TiffPointer = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

inline TiffPointer openTiff(const char* path, const char* mode, std::string& messages) {
  std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                           &TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), collectMessage, &messages);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), collectMessage, &messages);
  TiffPointer tiff(TIFFOpenExt(path, mode, options.get()), &TIFFClose);
  if (!tiff) throw std::runtime_error("libtiff: " + messages);
  return tiff;
}

inline void setTags(TIFF* tiff, const EncodedImage& image) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, image.bitsPerSample);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.samplesPerPixel);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, image.compression);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, image.photometric);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, image.rowsPerStrip);
  if (image.extraSample) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &*image.extraSample);
  if (const std::size_t entries = image.palette.size() / 3) {
    const std::uint16_t* palette = image.palette.data();
    TIFFSetField(tiff, TIFFTAG_COLORMAP, palette, palette + entries, palette + 2 * entries);
  }
  if (image.horizontalPredictor) TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

/// Writes a TIFF file of one page that holds the image's strips as they are.
inline void writeTiff(const std::filesystem::path& file, const EncodedImage& image,
                      bool bigEndian = false) {
  std::string messages;
  const TiffPointer tiff = openTiff(file.c_str(), bigEndian ? "wb" : "wl", messages);
  setTags(tiff.get(), image);
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    Bytes strip = image.strips[i];
    TIFFWriteRawStrip(tiff.get(), static_cast<std::uint32_t>(i), strip.data(),
                      static_cast<tmsize_t>(strip.size()));
  }
}

/// Reads all rows, or of each strip only those that are coded; then the others are 0.
inline LibtiffReading readWithLibtiff(const EncodedImage& image, bool bigEndian = false,
                                      const StripRows& codedRows = {}) {
  writeTiff(memoryFile(), image, bigEndian);
  LibtiffReading reading;
  const TiffPointer tiff = openTiff(memoryFile(), "rc", reading.messages);  // strips uncut
  const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff.get()));
  for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff.get()); ++i) {
    const std::uint32_t rows = std::min(image.rowsPerStrip, image.height - i * image.rowsPerStrip);
    const std::size_t asked = (codedRows.empty() ? rows : codedRows.at(i)) * rowBytes;
    Bytes strip(asked);
    if (asked > 0) {
      TIFFReadEncodedStrip(tiff.get(), i, strip.data(), static_cast<tmsize_t>(asked));
    }
    strip.resize(rows * rowBytes);
    reading.pixels.insert(reading.pixels.end(), strip.begin(), strip.end());
  }
  return reading;
}

}  // namespace orvane::test
