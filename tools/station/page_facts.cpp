#include "page_facts.h"

#include <cmath>
#include <mutex>

#include "imaging/LoadedPage.h"
#include "imaging/operations/blank.h"
#include "imaging/operations/skew.h"
#include "pixel_digest.h"

namespace orvane::station {
namespace {

constexpr double kMostSkew = 1.0;  // degrees

// Several pages of an ordinary size fit in the memory at once. Of larger ones only one is read.
constexpr std::uint64_t kOrdinaryBytes = std::uint64_t{64} << 20;

std::unique_lock<std::mutex> roomFor(const LoadedPage& page) {
  static std::mutex largePages;
  return page.bytesToEncode() > kOrdinaryBytes ? std::unique_lock(largePages)
                                               : std::unique_lock<std::mutex>();
}

}  // namespace

PageFacts examinePage(const std::wstring& path, bool measures) {
  const LoadedPage page(path, 1);
  const auto room = roomFor(page);
  CheckedData checked = checkPage(page, path);
  // The check has found no damage, so there is none.
  if (!checked.pixels && (measures || !checked.group4)) checked.pixels = page.pixels().value;

  PageFacts facts{page.width(), page.height(), page.resolution(),
                  checked.group4 ? pixelDigest(*checked.group4) : pixelDigest(*checked.pixels)};
  if (measures) {
    facts.isBlank = isBlank(*checked.pixels, facts.resolution);
    if (!facts.isBlank) facts.skew = skewBeyond(kMostSkew, *checked.pixels, facts.resolution);
  }
  return facts;
}

}  // namespace orvane::station
