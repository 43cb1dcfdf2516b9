#include "export/page_forecast.h"

#include <exception>
#include <optional>
#include <utility>

#include "docstore/ScanTree.h"

namespace orvane {
namespace {

using Names = std::vector<std::wstring>;

Names pagesOf(const std::wstring& document) {
  std::optional<Names> pages;
  try {
    readPageList(document, pages);
  } catch (const std::exception&) {  // no document, or one that the export will fail at
    return {};
  }
  return std::move(pages).value_or(Names{});
}

/// Where the export will be when it asks for the next page.
class Forecast {
 public:
  Forecast(Names documents, const SaveChoice& choice)
      : documents_(std::move(documents)), choice_(choice) {}

  std::optional<ExpectedPage> operator()() {
    while (page_ == pages_.size()) {
      if (nextDocument_ == documents_.size()) return std::nullopt;
      pages_ = pagesOf(documents_[nextDocument_++]);
      page_ = 0;
    }
    const std::wstring& document = documents_[nextDocument_ - 1];
    return ExpectedPage{GetPagePath(document, pages_[page_++]), choice_};
  }

 private:
  Names documents_;
  std::size_t nextDocument_ = 0;
  Names pages_;  ///< of the document before the next one
  std::size_t page_ = 0;
  SaveChoice choice_;
};

}  // namespace

SaveChoice saveChoice(std::int16_t SaveFileType, bool IsPageFile, std::int16_t CompressionType,
                      std::int16_t CompressionRatios) {
  const bool asImage = SaveFileType == 0 || (SaveFileType == 1 && IsPageFile);
  return {!asImage, SaveFileType == 1, CompressionType == 0, CompressionRatios};
}

PageForecast forecastOf(std::vector<std::wstring> documents, const SaveChoice& choice) {
  return Forecast(std::move(documents), choice);
}

}  // namespace orvane
