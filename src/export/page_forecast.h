#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "imaging/ImagingEngine.h"

/// Which pages an export will ask its imaging instance for, so that they can be prepared.
namespace orvane {

/// What the savers are asked for by an export in this form. A JPEG file holds one page, so a
/// multi-page JPEG is written as PDF under its ".jpg" name.
SaveChoice saveChoice(std::int16_t SaveFileType, bool IsPageFile, std::int16_t CompressionType,
                      std::int16_t CompressionRatios);

/// The pages of documents of the current batch (`gBatchFolder`), one document after another. A page
/// list is read when its first page is asked for. One that cannot be read is passed over and
/// nothing is logged: the export will meet it too.
PageForecast forecastOf(std::vector<std::wstring> documents, const SaveChoice& choice);

/// Gives an instance a forecast for the life of the object.
class ForecastInPlace {
 public:
  ForecastInPlace(ImagingEngine& instance, PageForecast forecast) : instance_(instance) {
    instance_.expectPages(std::move(forecast));
  }
  ~ForecastInPlace() { instance_.expectPages({}); }
  ForecastInPlace(const ForecastInPlace&) = delete;
  ForecastInPlace& operator=(const ForecastInPlace&) = delete;

 private:
  ImagingEngine& instance_;
};

}  // namespace orvane
