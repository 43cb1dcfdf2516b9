// Loads a page file and saves it in one of the forms of the export. A successful save must produce
// a file that can be read completely, and no input may take more memory than its size and that of
// its pixels allow.
#include "fuzz/Workshop.h"
#include "imaging/tiff/TiffPage.h"
#include "support/PeakMemory.h"

using namespace orvane;

namespace {

// Of the pixels; 0 for a page that cannot be opened.
std::uint64_t decodedBytes(const std::wstring& path) {
  PageInfo info;
  fuzz::succeeds([&] { info = TiffPage(path, 1).info(); });
  return (std::uint64_t{info.width} * info.bitsPerPixel + 7) / 8 * info.height;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Workshop shop;
  static ImagingControl control, reader;
  const struct {
    decltype(&mdlImageProcess::SaveImage) save;
    const char* name;
    bool compress;
  } forms[] = {{mdlImageProcess::SaveImage, "out.tif", true},
               {mdlImageProcess::SaveImage, "out.tif", false},
               {mdlImageProcess::SaveImage, "out.jpg", true},
               {mdlImageProcess::SavePDF, "out.pdf", true},
               {mdlImageProcess::SavePDF, "out.pdf", false}};
  shop.put("page.tif", data, size);
  const auto& form = forms[size % std::size(forms)];
  const std::wstring page = shop.station.path(L"page.tif");
  const std::wstring target = pathText(shop.station.native(form.name));
  bool saved = false;
  const std::uint64_t peak = test::HeapCount::peakOf(
      [&] { saved = form.save(control, page, 1, target, form.compress, 0, false); });
  fuzz::require(peak <= test::mostPageMemory(size, decodedBytes(page)), "too much memory");
  if (!saved) return 0;
  if (shop.bytesOf(form.name).starts_with("\xFF\xD8")) return 0;
  fuzz::require(fuzz::pagesOf(target) == 1, "the written file has no page");
  if (form.name == std::string("out.tif")) {
    fuzz::require(mdlImageProcess::SaveImage(reader, target, 1, shop.station.path(L"again.tif"),
                                             true, 0, false),
                  "the written file cannot be read");
  }
  return 0;
}
