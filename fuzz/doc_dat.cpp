// Loads and saves a page list. A saved list must load as the same list, and a failed save must not
// change the file. (Blanks before the first name are ignored in a list.)
#include "docstore/Document.h"
#include "docstore/ScanTree.h"
#include "fuzz/Workshop.h"

using namespace orvane;

namespace {

std::vector<std::wstring> pagesOf(const Document& document) {
  std::vector<std::wstring> pages;
  for (int i = 1; i <= document.PageCount(); ++i) {
    pages.push_back(document.GetPage(static_cast<std::int16_t>(i)));
  }
  return pages;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Workshop shop;
  gBatchFolder = shop.station.path(L"Batchs\\B1");
  shop.put("Batchs/B1/D1/Doc.dat", data, size);
  Document document, again;
  if (size > 60000 || !document.LoadDocument(L"D1")) return 0;
  const auto pages = pagesOf(document);
  const std::string before = shop.bytesOf("Batchs/B1/D1/Doc.dat");
  if (!document.SaveDocument()) {
    fuzz::require(shop.bytesOf("Batchs/B1/D1/Doc.dat") == before, "a failed save changed the file");
  } else if (!pages.empty() && !pages[0].starts_with(L' ')) {
    fuzz::require(again.LoadDocument(L"D1") && pagesOf(again) == pages, "the saved list differs");
  }
  return 0;
}
