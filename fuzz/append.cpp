// Appends a page to a given TIFF or PDF file. The result must have one page more, or the file must
// be unchanged.
#include "fuzz/Workshop.h"
#include "imaging/raster/Raster.h"
#include "support/command.h"

using namespace orvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Workshop shop;
  [[maybe_unused]] static const std::string drawn = test::outputOf(
      "convert -size 40x30 gradient: -depth 8 " + test::quoted(shop.station.native("new.tif")));
  const std::wstring path = shop.station.path(L"given");
  shop.put("given", data, size);
  const int before = fuzz::pagesOf(path);
  ImagingControl control;
  control.SourceFile(shop.station.path(L"new.tif"));
  control.OutputType(size >= 5 && std::string(data, data + 5) == "%PDF-" ? kSavePdf : kSaveTiff);
  control.TiffCompression(kTiffLzw);
  control.TargetFile(path);
  control.SaveMultiPage(true);
  if (!fuzz::succeeds([&] { control.SaveFile(); })) {
    const std::string after = shop.bytesOf("given");
    fuzz::require(after == std::string(data, data + size), "a failed append changed the file");
  } else if (before > 0) {
    fuzz::require(fuzz::pagesOf(path) == before + 1, "the page count is wrong");
  }
  return 0;
}
