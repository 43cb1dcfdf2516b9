#include "page_notices.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>

namespace orvane::station {
namespace {

constexpr double kLeastDpi = 200.0;
constexpr double kRounding = 0.5;  // a resolution in dots per centimetre is not a whole number
constexpr double kMostRatio = 4.0 / 3.0;

std::wstring rounded(double value) {
  return std::to_wstring(std::llround(value));
}

// The notices of one document.
class DocumentNotices {
 public:
  DocumentNotices(const CheckedDocument& document, std::vector<Finding>& notices)
      : document_(document), notices_(notices) {}

  void find(bool measured) {
    for (const CheckedPage& page : document_.pages) {
      if (!page.facts) continue;
      noteResolution(page);
      noteRepetition(page);
      if (!measured) continue;
      noteMeasures(page);
      noteSize(page);
    }
  }

 private:
  void add(Kind kind, const CheckedPage& page, const std::wstring& text) {
    notices_.push_back({kind, document_.name, page.path, text});
  }

  void noteResolution(const CheckedPage& page) {
    const Resolution& resolution = page.facts->resolution;
    if (!resolution.isStated) {
      add(Kind::Resolution, page, L"没有写明分辨率");
    } else if (std::min(resolution.x, resolution.y) < kLeastDpi - kRounding) {
      add(Kind::Resolution, page,
          L"分辨率只有 " + rounded(resolution.x) + L"×" + rounded(resolution.y) + L" dpi");
    }
  }

  void noteRepetition(const CheckedPage& page) {
    const auto [earlier, isNew] = byDigest_.emplace(page.facts->digest, &page);
    if (isNew) return;
    const CheckedPage& first = *earlier->second;
    add(Kind::Repeated, page,
        first.path == page.path ? L"在 Doc.dat 里列了不止一次"
                                : L"与 " + first.name + L" 每个像素都相同");
  }

  void noteMeasures(const CheckedPage& page) {
    if (page.facts->isBlank) add(Kind::Blank, page, L"空白页");
    const double skew = page.facts->skew;
    if (skew == 0.0) return;
    const long long tenths = std::llround(std::abs(skew) * 10.0);
    add(Kind::Skewed, page,
        (skew > 0 ? L"向右歪斜 " : L"向左歪斜 ") + std::to_wstring(tenths / 10) + L"." +
            std::to_wstring(tenths % 10) + L" 度");
  }

  // The longer side first: a page that lies on its side has the same size.
  static std::pair<double, double> sides(const PageFacts& page, bool inInches) {
    const double width = page.width / (inInches ? page.resolution.x : 1.0);
    const double height = page.height / (inInches ? page.resolution.y : 1.0);
    return {std::max(width, height), std::min(width, height)};
  }

  static bool differ(const PageFacts& page, const PageFacts& other) {
    const bool inInches = page.resolution.isStated && other.resolution.isStated;
    const auto [longer, shorter] = sides(page, inInches);
    const auto [otherLonger, otherShorter] = sides(other, inInches);
    const auto ratio = [](double a, double b) { return std::max(a, b) / std::min(a, b); };
    return ratio(longer, otherLonger) > kMostRatio || ratio(shorter, otherShorter) > kMostRatio;
  }

  void noteSize(const CheckedPage& page) {
    bool hasOthers = false;
    for (const CheckedPage& other : document_.pages) {
      if (&other == &page || !other.facts) continue;
      if (!differ(*page.facts, *other.facts)) return;
      hasOthers = true;
    }
    if (hasOthers)
      add(Kind::Size, page, L"大小与本件其他各页都相差三分之一以上：" + sizeText(page));
  }

  static std::wstring sizeText(const CheckedPage& page) {
    const PageFacts& facts = *page.facts;
    if (!facts.resolution.isStated) {
      return std::to_wstring(facts.width) + L"×" + std::to_wstring(facts.height) + L" 像素";
    }
    return rounded(facts.width / facts.resolution.x * 25.4) + L"×" +
           rounded(facts.height / facts.resolution.y * 25.4) + L" 毫米";
  }

  const CheckedDocument& document_;
  std::vector<Finding>& notices_;
  std::map<std::string, const CheckedPage*> byDigest_;
};

// The number of pages, if every page list could be read.
std::optional<std::size_t> pageCount(const BatchCheck& check) {
  std::size_t pages = 0;
  if (!check.obstacle.empty()) return std::nullopt;
  for (const CheckedDocument& document : check.documents) {
    if (!document.obstacle.empty()) return std::nullopt;
    pages += document.pages.size();
  }
  return pages;
}

}  // namespace

std::vector<Finding> noticesOf(const BatchCheck& check, std::optional<std::int16_t> PaperNum,
                               bool measured) {
  std::vector<Finding> notices;
  const std::optional<std::size_t> pages = pageCount(check);
  if (PaperNum && pages && std::cmp_not_equal(*PaperNum, *pages)) {
    notices.push_back({.kind = Kind::PaperNum,
                       .text = L"登记的页数（PaperNum）是 " + std::to_wstring(*PaperNum) +
                               L"，文件夹里有 " + std::to_wstring(*pages) + L" 页"});
  }
  for (const CheckedDocument& document : check.documents) {
    DocumentNotices(document, notices).find(measured);
  }
  return notices;
}

}  // namespace orvane::station
