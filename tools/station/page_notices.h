#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "station_check.h"

namespace orvane::station {

/// What is worth a look in a batch that has been checked, before a customer sees it: pages with a
/// low resolution or none, repeated pages; if the pages have been measured, also blank and skewed
/// ones and those of another size than the rest of their document. With a `PaperNum`, also one that
/// is not the number of pages; nothing is said of it when a page list could not be read. None of
/// this makes an export fail.
std::vector<Finding> noticesOf(const BatchCheck& check, std::optional<std::int16_t> PaperNum,
                               bool measured);

}  // namespace orvane::station
