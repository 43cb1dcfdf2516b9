// Makes page files of an image file of a scanner. Every page becomes a file that an export reads,
// or is refused with a reason, and none takes more memory than its bytes and its pixels allow.
#include "fuzz/Workshop.h"
#include "imaging/tiff/TiffPage.h"
#include "intake/open_source_file.h"
#include "support/PeakMemory.h"

using namespace orvane;

namespace {

// Returns false if `work` throws a Failure, and lets every other exception end the process.
template <typename Work>
bool isAccepted(Work work) noexcept {
  try {
    work();
    return true;
  } catch (const Failure& failure) {
    fuzz::require(!description(failure).empty(), "a refusal without a reason");
    return false;
  }
}

std::uint64_t decodedBytes(const std::wstring& path) {
  const PageInfo info = TiffPage(path, 1).info();
  return (std::uint64_t{info.width} * info.bitsPerPixel + 7) / 8 * info.height;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::int32_t kMostPages = 3;
  static const fuzz::Workshop shop;
  const std::wstring target = shop.station.path(L"page.tif");
  shop.put("given", data, size);
  std::unique_ptr<SourceFile> source;
  if (!isAccepted([&] { source = openSourceFile(shop.station.path(L"given")); }) || !source) {
    return 0;
  }
  fuzz::require(source->pageCount() > 0, "a file without pages");
  for (std::int32_t page = 1; page <= std::min(source->pageCount(), kMostPages); ++page) {
    isAccepted([&] { source->requirePage(page); });
    bool isWritten = false;
    const std::uint64_t peak = test::HeapCount::peakOf(
        [&] { isWritten = isAccepted([&] { source->writePage(page, target); }); });
    fuzz::require(isWritten == std::filesystem::exists(nativePath(target)), "a file is left");
    if (!isWritten) continue;  // the limits of the run hold for this one
    fuzz::require(peak <= test::mostPageMemory(size, decodedBytes(target)), "too much memory");
    std::filesystem::remove(nativePath(target));
  }
  return 0;
}
