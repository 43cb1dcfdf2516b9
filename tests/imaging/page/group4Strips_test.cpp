#include <gtest/gtest.h>

#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

std::optional<EncodedImage> stripsAfter(const TempStation& station, const std::string& command) {
  writeTiff(station.native("base.tif"), {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE});
  outputOf("cd " + quoted(station.native()) + " && " + command);
  return TiffPage(station.path(L"page.tif"), 1).group4Strips();
}

TEST(Group4Strips, AreTheBytesOfTheFileInFillOrder1) {
  const TempStation station;
  for (const std::uint32_t rowsPerStrip : {45U, 11U}) {
    const std::string options = "-c g4 -r " + std::to_string(rowsPerStrip);
    const auto plain = stripsAfter(station, "tiffcp " + options + " base.tif page.tif");
    ASSERT_TRUE(plain.has_value());
    const std::string file = readBytes(station.native("page.tif"));
    std::size_t at = 8;  // libtiff writes the strips in a row, behind the header
    for (const Bytes& strip : plain->strips) {
      EXPECT_EQ(file.substr(at, strip.size()), std::string(strip.begin(), strip.end()));
      at += strip.size();
    }
    EXPECT_EQ(plain->strips.size(), (45 + rowsPerStrip - 1) / rowsPerStrip);
    EXPECT_EQ(plain->rowsPerStrip, rowsPerStrip);
    EXPECT_EQ(plain->photometric, Photometric::MinIsWhite);
    EXPECT_EQ(plain->width, 61U);
    EXPECT_EQ(plain->height, 45U);
    const auto turned = stripsAfter(station, "tiffset -s 262 1 base.tif && tiffcp -f lsb2msb " +
                                                 options + " base.tif page.tif");
    ASSERT_TRUE(turned.has_value());
    EXPECT_EQ(turned->strips, plain->strips);
    EXPECT_EQ(turned->photometric, Photometric::MinIsBlack);
  }
}

TEST(Group4Strips, OtherPagesHaveNone) {
  const TempStation station;
  for (const char* command :
       {"tiffcp -c g4 -t -w 32 -l 16 base.tif page.tif", "tiffcp -c g3 base.tif page.tif",
        "cp base.tif page.tif", "tiffcp -c g4 base.tif page.tif && tiffset -s 274 6 page.tif",
        "tiffcp -c g4 base.tif page.tif && tiffset -s 293 2 page.tif"}) {  // uncompressed mode
    EXPECT_FALSE(stripsAfter(station, command).has_value()) << command;
  }
}

}  // namespace
}  // namespace orvane::test
