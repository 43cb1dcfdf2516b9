#include "imaging/codecs/group4.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <tiffio.h>

#include "foundation/Failure.h"
#include "imaging/codecs/bilevel_pages.h"
#include "imaging/codecs/libtiff_judge.h"

namespace orvane::test {
namespace {

using ::testing::HasSubstr;

// How many pages of each kind the corpus has; more for a long run.
int pagesPerKind() {
  const char* pages = std::getenv("ORVANE_GROUP4_PAGES");
  return pages != nullptr ? std::atoi(pages) : 40;
}

// Calls `visit` with each page of the corpus and a source of numbers for the rest of its test.
template <typename Visit>
void forEachPage(Visit visit) {
  for (int kind = 0; kind < kBilevelKinds; ++kind) {
    for (int i = 0; i < pagesPerKind(); ++i) {
      SCOPED_TRACE("kind " + std::to_string(kind) + " page " + std::to_string(i));
      Random random(static_cast<std::uint64_t>(kind * 100000 + i));
      const std::uint32_t width = 1 + random.below(i % 4 == 0 ? 4000 : 200);
      const Raster page = bilevelPage(random, kind, width, 1 + random.below(40));
      visit(page, random);
      if (::testing::Test::HasFatalFailure()) return;
    }
  }
}

EncodedImage imageOf(const Raster& page, std::vector<Bytes> strips, std::uint32_t rowsPerStrip) {
  EncodedImage image;
  image.width = page.width;
  image.height = page.height;
  image.compression = Compression::Group4;
  image.rowsPerStrip = rowsPerStrip;
  image.strips = std::move(strips);
  return image;
}

TEST(Group4, EncodesTheStreamThatLibtiffEncodes) {
  forEachPage([](const Raster& page, Random&) {
    const EncodedImage image = encodeGroup4(page);
    ASSERT_EQ(image.strips, encodeWithLibtiff(page, COMPRESSION_CCITTFAX4, page.height));
    const LibtiffReading reading = readWithLibtiff(image);
    ASSERT_EQ(reading.messages, "");
    ASSERT_EQ(reading.pixels, page.pixels);
    ASSERT_EQ(findGroup4Damage(image), std::nullopt);
  });
}

TEST(Group4, JoinsStripsToTheStreamOfTheWholePage) {
  forEachPage([](const Raster& page, Random& random) {
    const std::uint32_t rows = 1 + random.below(page.height);
    const EncodedImage strips =
        imageOf(page, encodeWithLibtiff(page, COMPRESSION_CCITTFAX4, rows), rows);
    ASSERT_EQ(findGroup4Damage(strips), std::nullopt);
    const EncodedImage joined = joinGroup4Strips(strips);
    ASSERT_EQ(joined.strips, encodeGroup4(page).strips);
    ASSERT_EQ(joined.rowsPerStrip, page.height);
  });
}

Bytes damaged(Bytes strip, Random& random) {
  const std::uint32_t at = random.below(strip.size());
  switch (random.below(3)) {
    case 0:
      strip[at] ^= static_cast<std::uint8_t>(1u << random.below(8));
      break;
    case 1:
      strip[at] = static_cast<std::uint8_t>(random.next());
      break;
    default:
      strip.resize(at);
  }
  return strip;
}

// Of a stream that both accept the rows must be the same: read as strips of one row, every row is
// written anew when they are joined.
TEST(Group4, NoticesAllDamageThatLibtiffNotices) {
  int noticed = 0;
  int noticedByLibtiff = 0;
  int accepted = 0;
  forEachPage([&](const Raster& page, Random& random) {
    const bool singleRows = random.below(4) == 0;
    const std::uint32_t rowsPerStrip = singleRows ? 1 : page.height;
    const auto strips = encodeWithLibtiff(page, COMPRESSION_CCITTFAX4, rowsPerStrip);
    for (int i = 0; i < 60; ++i) {
      EncodedImage image = imageOf(page, strips, rowsPerStrip);
      Bytes& strip = image.strips[random.below(strips.size())];
      strip = damaged(strip, random);
      if (strip.empty()) continue;
      const auto damage = findGroup4Damage(image);
      const LibtiffReading reading = readWithLibtiff(image);
      noticed += damage ? 1 : 0;
      noticedByLibtiff += reading.messages.empty() ? 0 : 1;
      if (damage) continue;
      ASSERT_EQ(reading.messages, "") << "not noticed in try " << i;
      ++accepted;
      ASSERT_EQ(readWithLibtiff(joinGroup4Strips(image)).pixels, reading.pixels);
    }
  });
  EXPECT_GE(noticed, noticedByLibtiff);
  EXPECT_GT(noticedByLibtiff, accepted);
  EXPECT_GT(accepted, 0);
  RecordProperty("noticed", noticed);
  RecordProperty("noticedByLibtiff", noticedByLibtiff);
  RecordProperty("accepted", accepted);
}

Bytes bytesOf(std::string bits) {
  std::erase(bits, ' ');
  Bytes bytes((bits.size() + 7) / 8);
  for (std::size_t i = 0; i < bits.size(); ++i) {
    if (bits[i] == '1') bytes[i / 8] |= static_cast<std::uint8_t>(0x80 >> i % 8);
  }
  return bytes;
}

Raster raster8x2(std::uint16_t bits, Bytes pixels) {
  Raster raster;
  raster.width = 8;
  raster.height = 2;
  raster.bitsPerSample = bits;
  raster.model = ColourModel::MinIsBlack;
  raster.pixels = std::move(pixels);
  return raster;
}

TEST(Group4, NamesTheRowAndTheDamage) {
  const std::string eol = "000000000001";
  const std::string eofb = eol + eol;
  const std::string row = "001 1000 10 1";  // 3 white, 3 black, 2 white: 8 pixels
  struct Case {
    std::string bits;
    const char* damage;  // nullptr: whole
  };
  const Case cases[] = {
      {row + "1 1 1" + eofb, nullptr},
      {row + "1 1 1", nullptr},
      {row + "1 1 1" + eofb + "00000000 00000000 00000000", nullptr},
      {row + "1 1 1" + eofb + "0000000000000 1" + eol + eol, nullptr},
      {row + "1 1 1" + "00000000 00000000", nullptr},
      {row + "1 1 1" + "00000001", "row 2: other data than an end of block"},
      {row + "1 1 1" + eol, "row 2: other data than an end of block"},
      {row + "1 1 1" + eofb + "00000000 1", "row 2: other data than an end of block"},
      {row + eofb, "row 2: the block ends before it"},
      {row + "1 1", "row 2: the data ends"},
      {row, "row 2: the data ends"},
      {"", "row 1: the data ends"},
      {row + "1 00000000 1", "row 2: bad code"},
      {row + "001 00000000 01", "row 2: bad code"},
      {row + "1" + eofb, "row 2: bad code"},
      {row + "0000001 111", "row 2: uncompressed mode"},
      {"011", "row 1: a run passes the width"},
      {"001 10011 010", "row 1: a run passes the width"},
      {"001 1000 0010 00000000", "row 1: a run passes the width"},
      {"001 000000011111 00110101 010", "row 1: a run passes the width"},
      {"0001", "row 1: a run passes the width"},
      {row + "000011 010 1", "row 2: a run goes backwards"},
      {row + "0001 001 00110101 10 1", "row 2: a run goes backwards"},
      {row + "001 0111 0000110111 1", "row 2: a run goes backwards"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.bits);
    EncodedImage image = imageOf(raster8x2(1, {}), {bytesOf(c.bits)}, 2);
    const auto damage = findGroup4Damage(image);
    if (c.damage == nullptr) {
      EXPECT_EQ(damage, std::nullopt);
    } else {
      EXPECT_THAT(damage.value_or("none"), HasSubstr(c.damage));
    }
  }
}

TEST(Group4, RefusesImpossibleImages) {
  const EncodedImage good = encodeGroup4(raster8x2(1, {0x3C, 0x81}));
  EXPECT_EQ(good.photometric, Photometric::MinIsBlack);
  EncodedImage wide = good;
  wide.width = 400'000'000;
  EXPECT_THAT(findGroup4Damage(wide).value_or("none"), HasSubstr("400000000 pixels"));
  EncodedImage shortOfStrips = good;
  shortOfStrips.rowsPerStrip = 1;
  EXPECT_THAT(findGroup4Damage(shortOfStrips).value_or("none"), HasSubstr("1 of 2 strips"));
  EXPECT_EQ(joinGroup4Strips(good).strips, good.strips);
  shortOfStrips.strips.assign(2, Bytes{0});
  EXPECT_THROW(joinGroup4Strips(shortOfStrips), Failure);
  EXPECT_THROW(
      encodeGroup4(Raster{8, 1, 8, 1, ColourModel::MinIsBlack, ExtraSample::None, {}, Bytes(8)}),
      Failure);
  EXPECT_THROW(encodeGroup4(raster8x2(8, Bytes(16))), Failure);
  EXPECT_THROW(encodeGroup4(raster8x2(1, Bytes(1))), Failure);
}

}  // namespace
}  // namespace orvane::test
