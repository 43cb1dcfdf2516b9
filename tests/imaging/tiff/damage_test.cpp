#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>

#include "imaging/Random.h"
#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/TempStation.h"
#include "support/command.h"
#include "support/failure_of.h"

namespace orvane::test {
namespace {

struct Damage : testing::Test {
  TempStation station;

  std::string stored(TiffKind kind, const std::string& storage) const {
    kind.width = 203, kind.height = 150;
    writeTiff(station.native("base.tif"), kind);
    outputOf("cd " + quoted(station.native()) + " && tiffcp " + storage + " base.tif page.tif");
    return readBytes(station.native("page.tif"));
  }
  Examined<Raster> decoded(const std::string& bytes) const {
    writeBytes(station.native("page.tif"), bytes);
    return TiffPage(station.path(L"page.tif"), 1).decode();
  }
  // Why a page is damaged; one of which nothing can be decoded throws it.
  std::string damageOf(const std::string& bytes) const {
    std::string damage;
    const std::string failure =
        failureOf([&] { damage = decoded(bytes).data.damage.value_or(""); });
    return damage + failure;
  }
};

const TiffKind kBilevel{.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE};
const TiffKind kBlackIsZero{.bits = 1};
const TiffKind kColour{.samples = 3, .photometric = PHOTOMETRIC_RGB};
const TiffKind kLab{.samples = 3, .photometric = PHOTOMETRIC_CIELAB};
const TiffKind kLogarithmic{
    .bits = 16, .samples = 3, .photometric = PHOTOMETRIC_LOGLUV, .compression = COMPRESSION_SGILOG};

bool isWhite(const Raster& raster, std::uint32_t y) {
  Raster blank = emptyRaster(raster, raster.width, 1);
  fillWithPaper(blank, {0, 0, blank.width, 1});
  clearPadding(blank);
  return std::equal(blank.pixels.begin(), blank.pixels.end(), raster.row(y));
}

// The strip is stored after the directory, so that the page still loads when the end is cut.
TEST_F(Damage, ACutPageKeepsItsBeginningAndIsWhiteAfterIt) {
  const std::tuple<std::string, TiffKind, std::uint32_t> cases[] = {
      {"none", {}, 1},         {"g3", kBilevel, 3}, {"g4", kBilevel, 4},    {"g3", kBlackIsZero, 3},
      {"g4", kBlackIsZero, 4}, {"lzw", {}, 5},      {"packbits", {}, 32773}};
  for (const auto& [storage, kind, compression] : cases) {
    SCOPED_TRACE(storage);
    const std::string file = stored(kind, "-r 160 -c " + storage);
    const std::string whole = rawGrayPage(
        203, 150, file.substr(8, directoryOf(file) - 8),
        {{258, 3, 1, kind.bits}, {259, 3, 1, compression}, {262, 3, 1, kind.photometric}});
    const Raster expected = decoded(whole).value;
    for (std::size_t i = 2; i < 20; ++i) {
      const std::size_t length = whole.size() * i / 20;
      const Examined<Raster> cut = decoded(whole.substr(0, length));
      ASSERT_TRUE(cut.data.damage.has_value()) << length;
      ASSERT_EQ(cut.value.pixels.size(), expected.pixels.size());
      if (length > whole.size() / 2) {
        EXPECT_TRUE(std::equal(expected.row(0), expected.row(40), cut.value.row(0)));
      } else {
        EXPECT_TRUE(isWhite(cut.value, 149)) << length;
      }
    }
  }
}

// What a decoder leaves after an error lacks its last steps: the byte order of 16-bit samples, and
// the sum over a row of differences. The whole rows before it are shown all the same.
TEST_F(Damage, RowsBeforeDamageAreShownAsTheyWere) {
  for (const std::string storage :
       {"-L -c packbits", "-B -c packbits", "-B -c lzw:2", "-c zip:2"}) {
    SCOPED_TRACE(storage);
    std::string file = stored({.bits = 16}, storage + " -r 50");
    const Raster whole = decoded(file).value;
    const std::size_t half = (file.size() - 400) * 5 / 6;  // of the last strip
    file.replace(half, file.size() - 400 - half, file.size() - 400 - half, '\0');
    const Examined<Raster> damaged = decoded(file);
    EXPECT_TRUE(damaged.data.damage.has_value());
    EXPECT_TRUE(std::equal(whole.row(0), whole.row(101), damaged.value.row(0)));
    const bool zerosAreCodes = storage == "-c zip:2";
    EXPECT_TRUE(zerosAreCodes || isWhite(damaged.value, 149));
  }
}

// Whatever makes libtiff's own tool complain is damage here, and nothing else; but of LZW that does
// not end with its rows more is noticed, and where there is a checksum everything.
TEST_F(Damage, EveryFlippedByteThatCanBeNoticedIsTold) {
  const std::pair<std::string, TiffKind> cases[] = {
      {"-c g4", kBilevel},
      {"-c g3:2d", kBilevel},
      {"-c lzw -r 50", kColour},
      {"-c zip -r 50", kColour},
      {"-c zip:2 -t -w 64 -l 64", kColour},
      {"-c jpeg -r 160", kColour},
      {"-c jpeg -t -w 64 -l 64", kColour},
      {"-c zstd", kColour},
      {"-c lzma -r 50", kColour},
      {"-c lzw -r 50", kLab},
  };
  Random random(20240511);
  for (const auto& [storage, kind] : cases) {
    const std::string whole = stored(kind, storage);
    int noticed = 0, moreThanTool = 0;
    for (int i = 0; i < 40; ++i) {
      std::string flipped = whole;
      const std::size_t at = 8 + random.below(whole.size() - 600);  // image data, no directory
      flipped[at] ^= static_cast<char>(1 + random.below(255));
      const bool damage = !damageOf(flipped).empty();
      const CommandResult tool =
          runCommand("cd " + quoted(station.native()) + " && tiffcp -c none page.tif copy.tif");
      const bool complains = tool.exitCode != 0 || !tool.output.empty();
      const bool hasChecksum = storage.starts_with("-c zip");
      const bool hasEnd = storage.starts_with("-c lzw");
      EXPECT_GE(damage, complains || hasChecksum) << storage << " " << at << tool.output;
      EXPECT_LE(damage, complains || hasChecksum || hasEnd) << storage << " " << at << tool.output;
      moreThanTool += damage && !complains;
      noticed += complains ? 1 : 0;
    }
    EXPECT_GT(noticed, 0) << storage;
    EXPECT_EQ(moreThanTool > 0, storage.starts_with("-c lzw") || storage.starts_with("-c zip"));
  }
}

// The last strip of some writers is coded in full height. Its checksum comes after the rows that
// are not there, and libtiff does not read so far. A strip that goes on for ever is damaged.
TEST_F(Damage, AStripThatIsCodedInFullHeightIsReadToItsEnd) {
  for (const std::string storage : {"zip", "zip:2", "zstd", "zstd:2", "lzma"}) {
    SCOPED_TRACE(storage);
    std::string file = stored({}, "-r 100 -c " + storage);
    const Raster whole = decoded(file).value;
    const auto shorten = [&file](std::uint32_t rows) {  // the first entries are width and height
      const std::size_t height = file.find(std::string("\1\1", 2), directoryOf(file)) + 8;
      file[height] = static_cast<char>(rows);
    };
    shorten(110);
    const Examined<Raster> cut = decoded(file);
    EXPECT_EQ(cut.data.damage, std::nullopt);
    EXPECT_TRUE(std::equal(cut.value.pixels.begin(), cut.value.pixels.end(), whole.pixels.begin()));
    shorten(1);
    EXPECT_THAT(damageOf(file), testing::HasSubstr("goes on after its rows"));
    if (storage.starts_with("zstd")) continue;  // libtiff writes no checksum in these
    shorten(110);
    const std::size_t end = directoryOf(file) - (storage == "lzma" ? 30 : 3);
    file[end] ^= 1;
    EXPECT_FALSE(damageOf(file).empty());
  }
}

// Zeros in place of the image data, or of its end alone; and JPEG that ends with its head, which
// the decoder fills up with gray.
TEST_F(Damage, APageOfWhichNothingCanBeDecodedThrows) {
  const std::pair<std::string, TiffKind> cases[] = {
      {"-c g3 -r 50", kBilevel},   {"-c g4 -r 50", kBilevel},  {"-c lzw -r 50", kColour},
      {"-c zip:2 -r 50", kColour}, {"-c zstd -r 50", kColour}, {"-c webp -r 50", kColour},
      {"-c jpeg -r 48", kColour},  {"-c lzw -r 50", kLab},     {"-c sgilog -r 50", kLogarithmic}};
  for (const auto& [storage, kind] : cases) {
    SCOPED_TRACE(storage);
    std::string file = stored(kind, storage);
    const std::size_t data = directoryOf(file) - 8;
    file.replace(8 + data * 2 / 3, data / 3, data / 3, '\0');
    EXPECT_TRUE(decoded(file).data.damage.has_value());
    file.replace(8, data, data, '\0');
    EXPECT_THAT(failureOf([&] { decoded(file); }),
                testing::HasSubstr("the page cannot be decoded"));
  }
  const std::string jpeg = outputOf("convert -size 64x48 gradient: jpg:-");
  const std::string head = jpeg.substr(0, jpeg.find("\xFF\xDA") + 10);
  EXPECT_EQ(damageOf(rawGrayPage(64, 48, jpeg, {{259, 3, 1, COMPRESSION_JPEG}})), "");
  EXPECT_THROW(decoded(rawGrayPage(64, 48, head, {{259, 3, 1, COMPRESSION_JPEG}})), Failure);
}

// The file is longer than what is read at once, so that its end goes while the page is open.
TEST_F(Damage, AFileThatShrinksWhileItIsOpenIsDamaged) {
  writeBytes(station.native("page.tif"), rawGrayPage(3000, 2000, std::string(6'000'000, 'x')));
  const TiffPage page(station.path(L"page.tif"), 1);
  std::filesystem::resize_file(station.native("page.tif"), 3'000'000);
  const Examined<Raster> decoded = page.decode();
  EXPECT_THAT(decoded.data.damage.value_or(""), testing::HasSubstr("expected 6000000"));
  EXPECT_EQ(*decoded.value.row(998), 'x');
  EXPECT_TRUE(isWhite(decoded.value, 1000));
}

}  // namespace
}  // namespace orvane::test
