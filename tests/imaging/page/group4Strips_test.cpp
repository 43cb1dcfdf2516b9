#include <gtest/gtest.h>

#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

TiffKind group4(std::uint32_t rowsPerStrip = 64) {
  TiffKind kind;
  kind.bits = 1;
  kind.photometric = PHOTOMETRIC_MINISWHITE;
  kind.compression = COMPRESSION_CCITTFAX4;
  kind.rowsPerStrip = rowsPerStrip;
  return kind;
}

std::optional<EncodedImage> stripsOf(const TempStation& station, const TiffKind& kind) {
  writeTiff(station.native("page.tif"), kind);
  return TiffPage(station.path(L"page.tif"), 1).group4Strips();
}

TEST(Group4Strips, AreTheBytesOfTheFileInFillOrder1) {
  const TempStation station;
  for (const std::uint32_t rowsPerStrip : {64U, 11U}) {
    const auto plain = stripsOf(station, group4(rowsPerStrip));
    ASSERT_TRUE(plain.has_value());
    const std::string file = readBytes(station.native("page.tif"));
    std::size_t at = 8;  // libtiff writes the strips in a row, behind the header
    for (const Bytes& strip : plain->strips) {
      EXPECT_EQ(file.substr(at, strip.size()), std::string(strip.begin(), strip.end()));
      at += strip.size();
    }
    EXPECT_EQ(plain->strips.size(), (45 + rowsPerStrip - 1) / rowsPerStrip);
    EXPECT_EQ(plain->rowsPerStrip, std::min(rowsPerStrip, 45U));
    EXPECT_EQ(plain->photometric, Photometric::MinIsWhite);
    EXPECT_EQ(plain->width, 61U);
    EXPECT_EQ(plain->height, 45U);

    TiffKind reversed = group4(rowsPerStrip);
    reversed.fillOrder = FILLORDER_LSB2MSB, reversed.photometric = PHOTOMETRIC_MINISBLACK;
    const auto turned = stripsOf(station, reversed);
    ASSERT_TRUE(turned.has_value());
    EXPECT_EQ(turned->strips, plain->strips);
    EXPECT_EQ(turned->photometric, Photometric::MinIsBlack);
  }
}

TEST(Group4Strips, OtherPagesHaveNone) {
  const TempStation station;
  TiffKind kinds[4] = {group4(), group4(), group4(), group4()};
  kinds[0].orientation = ORIENTATION_RIGHTTOP;
  kinds[1].rowsPerStrip = 0;
  kinds[2].compression = COMPRESSION_CCITTFAX3;
  kinds[3].compression = COMPRESSION_NONE;
  for (const TiffKind& kind : kinds) EXPECT_FALSE(stripsOf(station, kind).has_value());

  stripsOf(station, group4());
  outputOf("tiffset -s 293 2 " + quoted(station.native("page.tif")));  // uncompressed mode
  EXPECT_FALSE(TiffPage(station.path(L"page.tif"), 1).group4Strips().has_value());
}

}  // namespace
}  // namespace orvane::test
