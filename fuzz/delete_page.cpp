// Deletes a page of a given file. The result must have one page less, or the file must be
// unchanged.
#include "fuzz/Workshop.h"

using namespace orvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Workshop shop;
  const std::wstring path = shop.station.path(L"given");
  shop.put("given", data, size);
  const int before = fuzz::pagesOf(path);
  const auto page = static_cast<std::int32_t>(1 + size % 3);
  if (!fuzz::succeeds([&] { ImagingControl().DeletePageFromFile(path, page); })) {
    const std::string after = shop.bytesOf("given");
    fuzz::require(after == std::string(data, data + size), "a failed deletion changed the file");
  } else if (before > 0) {
    fuzz::require(fuzz::pagesOf(path) == before - 1, "the page count is wrong");
  }
  return 0;
}
