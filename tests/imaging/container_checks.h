#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>

#include "imaging/icc.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/lzw/lossless.h"
#include "support/FullDisk.h"
#include "support/TempStation.h"

namespace orvane::test {

/// One file in a folder of its own.
struct FileTest : testing::Test {
  TempStation station;
  std::filesystem::path file = station.native("out");
  std::wstring path = station.path(L"out");

  std::string bytes() const { return readBytes(file); }
  /// The output of commands that must succeed in the folder.
  std::string judge(const std::string& commands) const { return station.shell(commands); }
};

/// A small plain gray page whose pixels follow from `seed`.
inline EncodedImage plainPage(unsigned seed) {
  Raster raster = emptyRaster(RasterForm{8, 1, ColourModel::MinIsBlack}, 24, 5);
  for (unsigned i = 0; i < raster.pixels.size(); ++i) {
    raster.pixels[i] = static_cast<std::uint8_t>(i * (seed + 1) + seed);
  }
  EncodedImage image = encodeUncompressed(raster, SampleOrder::LittleEndian);
  image.resolution = {203.2F, 300};
  return image;
}

/// The same with an ICC profile on two of three, of which there is another one every 80 pages.
inline EncodedImage profiledPage(unsigned seed) {
  EncodedImage image = plainPage(seed);
  if (seed % 3 != 0) image.iccProfile = iccProfile("GRAY", seed / 80);
  return image;
}

/// An encoder for TiffFile::append that gives this page, whatever the file.
inline auto always(EncodedImage page) {
  return [page = std::move(page)](SampleOrder) { return page; };
}

inline EncodedImage jpegPage() {
  Raster rgb = emptyRaster(RasterForm{8, 3, ColourModel::Rgb}, 61, 45);
  for (unsigned i = 0; i < rgb.pixels.size(); ++i) {
    rgb.pixels[i] = static_cast<std::uint8_t>(i * i >> 5);
  }
  return encodeJpeg(rgb, {}, {});
}

/// How many bytes and calls this process has read and written, by the kernel's own count.
inline std::map<std::string, std::int64_t> inputAndOutput() {
  std::ifstream file("/proc/self/io");
  std::map<std::string, std::int64_t> counters;
  std::string name;
  while (file >> name) file >> counters[name];
  return counters;
}

}  // namespace orvane::test
