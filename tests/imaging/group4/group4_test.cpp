#include "imaging/group4/group4.h"

#include <cstdlib>
#include <gmock/gmock.h>

#include "imaging/libtiff_judge.h"
#include "imaging/pages.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

using ::testing::HasSubstr;

// How many pages of each kind the corpus has; more for a long run.
int pagesPerKind() {
  const char* pages = std::getenv("ORVANE_GROUP4_PAGES");
  return pages != nullptr ? std::atoi(pages) : 30;
}

// Calls `visit` with each page of the corpus and a random generator for the rest of the test.
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

// Rows `y` to `end` of the page, coded.
Bytes strip(const Raster& page, std::uint32_t y, std::uint32_t end) {
  Raster part = emptyRaster(page, page.width, end - y);
  part.pixels.assign(page.row(y), page.row(y) + part.pixels.size());
  return encodeGroup4(part).strips[0];
}

// The page in strips of `rows` rows.
EncodedImage inStrips(const Raster& page, std::uint32_t rows) {
  EncodedImage image = encodeGroup4(page);
  image.rowsPerStrip = rows;
  image.strips.clear();
  for (std::uint32_t y = 0; y < page.height; y += rows) {
    image.strips.push_back(strip(page, y, std::min(y + rows, page.height)));
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
      ASSERT_EQ(copyGroup4(read, Group4Output::Strips).image.value().strips, read.strips);
    }
    const EncodedImage joined = copyGroup4(strips, Group4Output::OneStream).image.value();
    ASSERT_EQ(joined.strips, image.strips);
    ASSERT_EQ(joined.rowsPerStrip, page.height);
  });
}

TEST(Group4, RowsThatWereNeverCodedArePaperUnlessOthersFollow) {
  forEachPage([](Raster page, Random& random) {
    if (random.below(2) == 0) page.model = ColourModel::MinIsBlack;
    EncodedImage image = inStrips(page, 1 + random.below(page.height));
    const Bytes lastStrip = image.strips.back();
    const std::uint32_t codedRows = 1 + random.below(page.height);
    StripRows coded;
    for (std::uint32_t y = 0; y < page.height; y += image.rowsPerStrip) {
      const std::uint32_t end = std::min(y + image.rowsPerStrip, codedRows);
      coded.push_back(std::max(y, end) - y);
      image.strips[coded.size() - 1] = y < end ? strip(page, y, end) : Bytes{0, 0x10, 0x01};
    }
    std::fill(page.row(codedRows), page.row(page.height), paperByte(page));
    clearPadding(page);
    for (const Group4Output output : {Group4Output::Strips, Group4Output::OneStream}) {
      const Group4Copy copy = copyGroup4(image, output);
      ASSERT_EQ(copy.codedRows, coded);
      const LibtiffReading reading = readWithLibtiff(copy.image.value());
      ASSERT_EQ(reading.messages, "");
      ASSERT_EQ(reading.pixels, page.pixels);
    }
    if (codedRows >= (coded.size() - 1) * image.rowsPerStrip) return;
    image.strips.back() = lastStrip;
    ASSERT_THAT(copyGroup4(image, Group4Output::Strips).damage.value(),
                HasSubstr("rows are missing"));
  });
}

// Rows that both readers accept must have the same pixels: if each strip is one row, every row is
// coded again when the strips are joined. We refuse rows that libtiff accepts only because of the
// data after them.
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
      const Group4Copy copy = copyGroup4(image, Group4Output::OneStream);
      if (copy.damage && copy.damage->find("other data") == std::string::npos) {
        ASSERT_NE(reading.messages, "") << *copy.damage << " in try " << i;
      }
      if (!copy.image) continue;
      const LibtiffReading codedRows = readWithLibtiff(image, false, copy.codedRows);
      ASSERT_EQ(codedRows.messages, "") << "not noticed in try " << i;
      ++accepted;
      ASSERT_EQ(readWithLibtiff(*copy.image).pixels, codedRows.pixels);
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

const Raster kBlank = emptyRaster(RasterForm{}, 8, 2);

// What is done with a strip, and its number of coded rows.
std::string outcomeOf(const Group4Copy& copy) {
  if (copy.damage) return *copy.damage;
  return (copy.image ? "copied " : "decoded ") + std::to_string(copy.codedRows.at(0));
}

TEST(Group4, CopiesRowsAndNotWhatFollowsOrNamesTheRowAndTheDamage) {
  const std::string eol = "000000000001", eofb = eol + eol;
  const std::string row = "001 1000 10 1";  // 3 white, 3 black, 2 white: 8 pixels
  const std::string two = row + "1 1 1", one = row + "0001 1";
  // The two lines of eight pixels that are explained at the head of the reader.
  const std::string lines = "001 000111 11 0000010 010 1  011 011 0001 1";
  const std::string lastPixel = "001 1111 010";  // the last pixel is black
  const struct {
    std::string bits, outcome, copy;
  } cases[] = {
      {two + eofb, "copied 2", two},
      {two, "copied 2", two},
      {lines + eofb, "copied 2", lines},
      {lastPixel + "1 1", "copied 2", lastPixel + "1 1"},
      {lastPixel + "011", "copied 2", lastPixel + "011"},
      {lastPixel + "000011", "row 2: a run passes the width", ""},
      {one, "copied 2", one},
      {"1 1", "copied 2", "1 1"},
      {"1" + eofb, "copied 1", "1 1"},
      {"1 1 1", "row 2: other data than an end of block", ""},
      {two + eol, "copied 2", two},
      {two + "00000000" + eol + "000" + eol + "0000", "copied 2", two},
      {two + eofb + "0000000000000 1" + eol + eol, "copied 2", two},
      {two + eofb + "00000000 1", "copied 2", two},
      {two + "0000000" + eofb + "1111 1111", "copied 2", two},
      {two + eol + "1", "row 2: other data than an end of block", ""},
      {two + "1 1 1" + eofb, "row 2: other data than an end of block", ""},
      {row + eofb, "copied 1", one},
      {row + "00000" + eofb + "11", "copied 1", one},
      {row + eol, "row 2: the block ends before it", ""},
      {eofb, "no row is coded", ""},
      {row + "1 1", "row 2: the data ends", ""},
      {"", "row 1: the data ends", ""},
      {row + "1" + eofb, "row 2: bad code", ""},
      {row + "0000001 111", "row 2: uncompressed mode", ""},
      {"011", "row 1: a run passes the width", ""},
      {"001 000000011111 00110101 010", "row 1: a run passes the width", ""},
      {row + "000011 0000010 1", "row 2: a run goes backwards", ""},
      // Encoders in use write these. T.6 does not allow them; PDF readers interpret them
      // differently.
      {row + "000011 010 1", "decoded 2", ""},  // two elements at one position
      {row + "001 0111 0000110111 1 1 1" + eofb + "1", "decoded 2", ""},  // a black run of 0
      {"001 00110101 0000110111 1"
       "1 1",
       "decoded 2", ""},  // two runs of 0 first
      {"001 00110101 0000110111 1" + eofb, "decoded 1", ""},
      {row + "0001 0001", "decoded 2", ""},                 // ends in a pass code
      {"001 0111 0010 000011 001 010 1", "decoded 2", ""},  // white 3 (1000) without its 000
      {row + "000011 010 1 1", "row 2: other data than an end of block", ""},
  };
  for (const auto& [bits, outcome, rows] : cases) {
    EncodedImage image = encodeGroup4(kBlank);
    image.strips = {bytesOf(bits)};
    const Group4Copy copy = copyGroup4(image, Group4Output::Strips);
    EXPECT_THAT(outcomeOf(copy), HasSubstr(outcome)) << bits;
    if (copy.image) {
      EXPECT_EQ(copy.image->strips[0], bytesOf(rows + eofb)) << bits;
    } else if (!copy.damage) {
      EXPECT_EQ(readWithLibtiff(image, false, copy.codedRows).messages, "") << bits;
    }
  }
}

TEST(Group4, RunsAroundTheirMakeUpCodesAreReadByLibtiff) {
  for (const std::uint32_t run : {63, 64, 2559, 2560, 2623, 2624, 2687, 2688, 5183, 5184, 7744}) {
    Raster page = emptyRaster(RasterForm{}, 2 * run + 8, 1);
    for (std::uint32_t x = run; x < 2 * run; ++x) {
      page.pixels[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
    }
    const LibtiffReading reading = readWithLibtiff(encodeGroup4(page));
    EXPECT_EQ(reading.messages, "") << run;
    EXPECT_EQ(reading.pixels, page.pixels) << run;
  }
}

TEST(Group4, BlankRowsEndWithThePageOrWithTheirBits) {
  for (const std::uint32_t rows : {1, 55, 56, 57, 63, 64, 200}) {
    EncodedImage image = encodeGroup4(emptyRaster(RasterForm{}, 8, rows));
    EXPECT_EQ(copyGroup4(image, Group4Output::Strips).image.value().strips, image.strips) << rows;
    ++image.height, ++image.rowsPerStrip;
    const Group4Copy copy = copyGroup4(image, Group4Output::Strips);
    EXPECT_EQ(copy.codedRows, StripRows{rows}) << copy.damage.value_or("");
    EXPECT_EQ(copy.image.value().strips,
              encodeGroup4(emptyRaster(RasterForm{}, 8, rows + 1)).strips);
  }
}

TEST(Group4, RefusesImpossibleImages) {
  EncodedImage wide = encodeGroup4(kBlank), shortOfStrips = wide;
  wide.width = 400'000'000;
  const auto damage = [](const EncodedImage& image) {
    return copyGroup4(image, Group4Output::Strips).damage.value_or("none");
  };
  EXPECT_THAT(damage(wide), HasSubstr("400000000 pixels"));
  shortOfStrips.rowsPerStrip = 1;
  EXPECT_THAT(damage(shortOfStrips), HasSubstr("1 of 2 strips"));
  Raster shortOfPixels = kBlank;
  shortOfPixels.pixels.pop_back();
  EXPECT_THROW(encodeGroup4(shortOfPixels), Failure);
  EXPECT_THROW(encodeGroup4(emptyRaster(form(ColourModel::MinIsBlack, 8), 8, 2)), Failure);
}

}  // namespace
}  // namespace orvane::test
