#include "imaging/containers/sample_pages.h"

#include "foundation/path_text.h"
#include "imaging/codecs/group4.h"
#include "imaging/codecs/jpeg.h"
#include "imaging/codecs/lossless.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_kinds.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

EncodedImage encoded(const Raster& raster, Compression compression) {
  if (compression == Compression::Group4) return encodeGroup4(raster);
  if (compression == Compression::Jpeg) return encodeJpeg(raster, {10, 10}, {});
  if (compression == Compression::Lzw) return encodeLzw(raster, SampleOrder::LittleEndian);
  return encodeUncompressed(raster, SampleOrder::LittleEndian);
}

}  // namespace

std::vector<SampleDocument> makeDocuments(const std::filesystem::path& folder) {
  constexpr std::uint16_t kWhite = PHOTOMETRIC_MINISWHITE, kPalette = PHOTOMETRIC_PALETTE;
  constexpr std::uint16_t kRgb = PHOTOMETRIC_RGB, kCmyk = PHOTOMETRIC_SEPARATED;
  const TiffKind rgba{.samples = 4, .photometric = kRgb, .extras = {EXTRASAMPLE_UNASSALPHA}};
  const TiffKind rgb{.samples = 3, .photometric = kRgb};
  const TiffKind large{.samples = 3, .photometric = kRgb, .width = 507, .height = 301};
  const std::tuple<std::string, TiffKind, Compression, bool> rows[] = {
      {"group4", {.bits = 1, .photometric = kWhite}, Compression::Group4, true},
      {"group4 black", {.bits = 1}, Compression::Group4, true},
      {"bilevel", {.bits = 1, .photometric = kWhite}, Compression::None, true},
      {"gray4", {.bits = 4}, Compression::None, true},
      {"white8", {.photometric = kWhite}, Compression::None, true},
      {"palette4", {.bits = 4, .photometric = kPalette}, Compression::None, true},
      {"palette8", {.photometric = kPalette}, Compression::None, true},
      {"rgb8", rgb, Compression::None, true},
      {"gray16", {.bits = 16}, Compression::None, false},
      {"rgb8 lzw", large, Compression::Lzw, false},
      {"rgba8", rgba, Compression::None, false},
      {"cmyk8", {.samples = 4, .photometric = kCmyk}, Compression::None, false},
      {"jpeg gray", {}, Compression::Jpeg, true},
      {"jpeg colour", rgb, Compression::Jpeg, true}};
  std::vector<SampleDocument> documents;
  for (const auto& [name, kind, compression, fitsPdf] : rows) {
    SampleDocument document{name, fitsPdf, {}, folder / (name + ".tif")};
    const int pages = compression == Compression::Jpeg ? 1 : 3;
    writeTiff(document.reference, kind, pages);
    for (int i = 1; i <= pages; ++i) {
      const TiffPage page(pathText(document.reference), i);
      document.pages.push_back(encoded(page.decode().raster, compression));
      document.pages.back().resolution = {200, 200};
    }
    if (compression == Compression::Jpeg) {
      document.reference = folder / (name + ".jpg");
      const Bytes& stream = document.pages[0].strips[0];
      writeBytes(document.reference, {stream.begin(), stream.end()});
    }
    documents.push_back(document);
  }
  return documents;
}

EncodedImage plainPage(unsigned seed) {
  Raster raster;
  raster.width = 24, raster.height = 5;
  raster.bitsPerSample = 8;
  raster.model = ColourModel::MinIsBlack;
  for (unsigned i = 0; i < 24 * 5; ++i) {
    raster.pixels.push_back(static_cast<std::uint8_t>(i * (seed + 1) + seed));
  }
  EncodedImage image = encoded(raster, Compression::None);
  image.resolution = {203.2F, 300};
  return image;
}

}  // namespace orvane::test
