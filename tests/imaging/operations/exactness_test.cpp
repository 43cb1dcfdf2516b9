#include <gtest/gtest.h>

#include "imaging/codecs/Random.h"
#include "imaging/operations/operations.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

// The samples as netpbm's PAM holds them: one byte each, or two with the high one first.
std::string samplesOf(const Raster& raster) {
  std::string samples;
  const std::size_t bits = raster.bitsPerSample;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    const std::uint8_t* row = raster.row(y);
    for (std::size_t i = 0; i < std::size_t{raster.width} * raster.samplesPerPixel; ++i) {
      if (bits == 16) samples += static_cast<char>(row[2 * i + 1]);
      const int shift = bits == 16 ? 0 : static_cast<int>(8 - bits - i * bits % 8);
      const int byte = bits == 16 ? row[2 * i] : row[i * bits / 8];
      samples += static_cast<char>(byte >> shift & ((1 << std::min<std::size_t>(bits, 8)) - 1));
    }
  }
  return samples;
}

std::string pamHeader(const Raster& raster) {
  return "P7\nWIDTH " + std::to_string(raster.width) + "\nHEIGHT " + std::to_string(raster.height) +
         "\nDEPTH " + std::to_string(raster.samplesPerPixel) + "\nMAXVAL " +
         std::to_string((1 << raster.bitsPerSample) - 1) + "\nTUPLTYPE x\nENDHDR\n";
}

// Compares a changed page, its size too, with what a netpbm tool makes of the page.
void expectAsMadeBy(const std::string& tool, const Raster& page, const Raster& changed) {
  SCOPED_TRACE(tool + " at " + std::to_string(page.bitsPerSample) + " bits x " +
               std::to_string(page.samplesPerPixel));
  const TempStation folder;
  writeBytes(folder.native("page.pam"), pamHeader(page) + samplesOf(page));
  EXPECT_EQ(outputOf(tool + " " + quoted(folder.native("page.pam"))),
            pamHeader(changed) + samplesOf(changed));
}

TEST(CropAndRotate, AreExactAtEveryDepth) {
  const std::vector<std::pair<std::uint16_t, std::uint16_t>> depths = {
      {1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}, {1, 3}, {4, 2}, {8, 3}, {8, 4}, {16, 3}};
  for (const auto& [bits, samples] : depths) {
    Raster form;
    form.bitsPerSample = bits;
    form.samplesPerPixel = samples;
    Raster page = emptyRaster(form, 40, 23);
    Random random(bits * 10u + samples);
    for (std::uint8_t& byte : page.pixels) byte = static_cast<std::uint8_t>(random.below(256));

    expectAsMadeBy("pamcut 5 3 19 11", page, crop(page, 5, 3, 19, 11));
    expectAsMadeBy("pamcut 0 20 40 3", page, crop(page, -4, 20, 2147483647, 90));
    expectAsMadeBy("pamcut 39 0 1 1", page, crop(page, 39, -1, 9, 2));
    expectAsMadeBy("pamflip -ccw", page, rotate(page, 90));
    expectAsMadeBy("pamflip -cw", page, rotate(page, -90));
    expectAsMadeBy("pamflip -r180", page, rotate(page, -180));
    expectAsMadeBy("pamflip -ccw", page, rotate(page, 450));
  }
}

}  // namespace
}  // namespace orvane::test
