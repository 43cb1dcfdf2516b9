#include "imaging/codecs/group4.h"

#include <cstdlib>
#include <gmock/gmock.h>

#include "imaging/codecs/libtiff_judge.h"
#include "imaging/codecs/pages.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

using ::testing::HasSubstr;

// How many pages of each kind the corpus has; more for a long run.
int pagesPerKind() {
  const char* pages = std::getenv("ORVANE_GROUP4_PAGES");
  return pages != nullptr ? std::atoi(pages) : 30;
}

// Calls `visit` with each page of the corpus and a source of numbers for the rest of its test.
template <typename Visit>
void forEachPage(Visit visit) {
  for (const std::uint32_t longestRun : {1, 3, 20, 300, 10000}) {
    for (int i = 0; i < pagesPerKind(); ++i) {
      SCOPED_TRACE("runs to " + std::to_string(longestRun) + ", page " + std::to_string(i));
      Random random(longestRun * 1000 + static_cast<std::uint64_t>(i));
      const std::uint32_t width = 1 + random.below(i % 4 == 0 ? 4000 : 200);
      visit(bilevelPage(random, longestRun, width, 1 + random.below(40)), random);
      if (::testing::Test::HasFatalFailure()) return;
    }
  }
}

// The page in strips of `rows` rows.
EncodedImage inStrips(const Raster& page, std::uint32_t rows) {
  EncodedImage image = encodeGroup4(page);
  image.rowsPerStrip = rows;
  image.strips.clear();
  for (std::uint32_t y = 0; y < page.height; y += rows) {
    Raster part = emptyRaster(page, page.width, std::min(rows, page.height - y));
    part.pixels.assign(page.row(y), page.row(y) + part.pixels.size());
    image.strips.push_back(encodeGroup4(part).strips[0]);
  }
  return image;
}

TEST(Group4, PagesAndTheirStripsAreReadByLibtiffAndJoinToTheSameStream) {
  forEachPage([](const Raster& page, Random& random) {
    const EncodedImage image = encodeGroup4(page);
    const EncodedImage strips = inStrips(page, 1 + random.below(page.height));
    for (const EncodedImage& read : {image, strips}) {
      const LibtiffReading reading = readWithLibtiff(read);
      ASSERT_EQ(reading.messages, "");
      ASSERT_EQ(reading.pixels, page.pixels);
      ASSERT_EQ(findGroup4Damage(read), std::nullopt);
    }
    const EncodedImage joined = joinGroup4Strips(strips);
    ASSERT_EQ(joined.strips, image.strips);
    ASSERT_EQ(joined.rowsPerStrip, page.height);
  });
}

// Of a stream that both accept the rows must be the same: read as strips of one row, every row is
// written anew when they are joined.
TEST(Group4, NoticesAllDamageThatLibtiffNotices) {
  int noticedByLibtiff = 0, accepted = 0;
  forEachPage([&](const Raster& page, Random& random) {
    const EncodedImage whole = inStrips(page, random.below(4) == 0 ? 1 : page.height);
    for (int i = 0; i < 50; ++i) {
      EncodedImage image = whole;
      Bytes& strip = image.strips[random.below(image.strips.size())];
      strip = damaged(strip, random);
      if (strip.empty()) continue;
      const LibtiffReading reading = readWithLibtiff(image);
      noticedByLibtiff += reading.messages.empty() ? 0 : 1;
      if (findGroup4Damage(image)) continue;
      ASSERT_EQ(reading.messages, "") << "not noticed in try " << i;
      ++accepted;
      ASSERT_EQ(readWithLibtiff(joinGroup4Strips(image)).pixels, reading.pixels);
    }
  });
  EXPECT_GT(noticedByLibtiff, accepted);
  EXPECT_GT(accepted, 0);
}

Bytes bytesOf(std::string bits) {
  std::erase(bits, ' ');
  Bytes bytes((bits.size() + 7) / 8);
  for (std::size_t i = 0; i < bits.size(); ++i) {
    if (bits[i] == '1') bytes[i / 8] |= static_cast<std::uint8_t>(0x80 >> i % 8);
  }
  return bytes;
}

const Raster kBlank = emptyRaster(Raster{}, 8, 2);

TEST(Group4, NamesTheRowAndTheDamage) {
  const std::string eol = "000000000001", eofb = eol + eol;
  const std::string row = "001 1000 10 1";  // 3 white, 3 black, 2 white: 8 pixels
  const std::pair<std::string, std::string> cases[] = {
      {row + "1 1 1" + eofb, "whole"},
      {row + "1 1 1", "whole"},
      {row + "1 1 1" + eofb + "0000000000000 1" + eol + eol, "whole"},
      {row + "1 1 1" + eol, "row 2: other data than an end of block"},
      {row + "1 1 1" + eofb + "00000000 1", "row 2: other data than an end of block"},
      {row + eofb, "row 2: the block ends before it"},
      {row + "1 1", "row 2: the data ends"},
      {"", "row 1: the data ends"},
      {row + "1" + eofb, "row 2: bad code"},
      {row + "0000001 111", "row 2: uncompressed mode"},
      {"011", "row 1: a run passes the width"},
      {"001 000000011111 00110101 010", "row 1: a run passes the width"},
      {row + "000011 010 1", "row 2: a run goes backwards"},
      {row + "001 0111 0000110111 1", "row 2: a run goes backwards"},
  };
  for (const auto& [bits, damage] : cases) {
    EncodedImage image = encodeGroup4(kBlank);
    image.strips = {bytesOf(bits)};
    EXPECT_THAT(findGroup4Damage(image).value_or("whole"), HasSubstr(damage)) << bits;
  }
}

TEST(Group4, RefusesImpossibleImages) {
  EncodedImage wide = encodeGroup4(kBlank), shortOfStrips = wide;
  wide.width = 400'000'000;
  EXPECT_THAT(findGroup4Damage(wide).value_or("none"), HasSubstr("400000000 pixels"));
  shortOfStrips.rowsPerStrip = 1;
  EXPECT_THAT(findGroup4Damage(shortOfStrips).value_or("none"), HasSubstr("1 of 2 strips"));
  shortOfStrips.strips.assign(2, Bytes{0});
  EXPECT_THROW(joinGroup4Strips(shortOfStrips), Failure);
  Raster shortOfPixels = kBlank;
  shortOfPixels.pixels.pop_back();
  EXPECT_THROW(encodeGroup4(shortOfPixels), Failure);
  EXPECT_THROW(encodeGroup4(emptyRaster(form(ColourModel::MinIsBlack, 8), 8, 2)), Failure);
}

}  // namespace
}  // namespace orvane::test
