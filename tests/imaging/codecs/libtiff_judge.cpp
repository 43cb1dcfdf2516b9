#include "imaging/codecs/libtiff_judge.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <tiffio.h>

#include "imaging/codecs/encoded_form.h"

namespace orvane::test {
namespace {

struct MemoryFile {
  Bytes bytes;
  std::size_t position = 0;
};

MemoryFile& fileOf(thandle_t handle) {
  return *static_cast<MemoryFile*>(handle);
}

tmsize_t readMemory(thandle_t handle, void* to, tmsize_t size) {
  MemoryFile& file = fileOf(handle);
  const std::size_t left = file.bytes.size() - std::min(file.position, file.bytes.size());
  const std::size_t count = std::min(left, static_cast<std::size_t>(size));
  if (count != 0) std::memcpy(to, file.bytes.data() + file.position, count);
  file.position += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t writeMemory(thandle_t handle, void* from, tmsize_t size) {
  MemoryFile& file = fileOf(handle);
  const auto count = static_cast<std::size_t>(size);
  file.bytes.resize(std::max(file.bytes.size(), file.position + count));
  if (count != 0) std::memcpy(file.bytes.data() + file.position, from, count);
  file.position += count;
  return size;
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
  MemoryFile& file = fileOf(handle);
  if (whence == SEEK_CUR) offset += file.position;
  if (whence == SEEK_END) offset += file.bytes.size();
  return file.position = offset;
}

int closeMemory(thandle_t) {
  return 0;
}
toff_t sizeOfMemory(thandle_t handle) {
  return fileOf(handle).bytes.size();
}

int collectMessage(TIFF*, void* messages, const char*, const char* format, va_list arguments) {
  char text[512];
  vsnprintf(text, sizeof text, format, arguments);
  *static_cast<std::string*>(messages) += std::string(text) + "\n";
  return 1;
}

using TiffPointer = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

TiffPointer openMemory(MemoryFile& file, const char* mode, std::string& messages) {
  file.position = 0;
  std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                           &TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), collectMessage, &messages);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), collectMessage, &messages);
  TiffPointer tiff(TIFFClientOpenExt("memory", mode, &file, readMemory, writeMemory, seekMemory,
                                     closeMemory, sizeOfMemory, nullptr, nullptr, options.get()),
                   &TIFFClose);
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

Bytes tiffOf(const EncodedImage& image, bool bigEndian) {
  MemoryFile file;
  std::string messages;
  TiffPointer tiff = openMemory(file, bigEndian ? "wb" : "wl", messages);
  setTags(tiff.get(), image);
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    Bytes strip = image.strips[i];
    TIFFWriteRawStrip(tiff.get(), static_cast<std::uint32_t>(i), strip.data(),
                      static_cast<tmsize_t>(strip.size()));
  }
  tiff.reset();
  return std::move(file.bytes);
}

void writeTiff(const std::filesystem::path& file, const EncodedImage& image, bool bigEndian) {
  const Bytes bytes = tiffOf(image, bigEndian);
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

LibtiffReading readWithLibtiff(const EncodedImage& image, bool bigEndian) {
  MemoryFile file{tiffOf(image, bigEndian)};
  LibtiffReading reading;
  TiffPointer tiff = openMemory(file, "r", reading.messages);
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
  MemoryFile file;
  std::string messages;
  EncodedImage image = encodedFormOf(raster);
  image.rowsPerStrip = rowsPerStrip;
  TiffPointer tiff = openMemory(file, "w", messages);
  setTags(tiff.get(), image);
  TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, compression);
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    Bytes row(raster.row(y), raster.row(y) + raster.rowBytes());
    TIFFWriteScanline(tiff.get(), row.data(), y);
  }
  tiff.reset();
  tiff = openMemory(file, "r", messages);
  std::vector<Bytes> strips;
  for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff.get()); ++i) {
    Bytes strip(static_cast<std::size_t>(TIFFRawStripSize(tiff.get(), i)));
    TIFFReadRawStrip(tiff.get(), i, strip.data(), static_cast<tmsize_t>(strip.size()));
    strips.push_back(std::move(strip));
  }
  return strips;
}

}  // namespace orvane::test
