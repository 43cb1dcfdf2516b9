#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::station {

/// What was found in one batch that waits for its export. Nothing is written.
struct BatchCheck {
  std::uint64_t documents = 0;
  std::uint64_t pages = 0;
  std::uint64_t bytes = 0;              ///< of the page files
  std::vector<std::wstring> obstacles;  ///< what the export would fail at
};

/// Looks at everything that the export of a batch reads: its folder, every `Doc.dat`, every page.
/// Unlike an export it goes on after an obstacle, and tells all of them.
BatchCheck checkBatch(const std::wstring& BatchID);

}  // namespace orvane::station
