#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::station {

/// The result of checking a waiting batch.
struct BatchCheck {
  std::uint64_t documents = 0;
  std::uint64_t pages = 0;
  std::uint64_t bytes = 0;              ///< of the page files
  std::vector<std::wstring> obstacles;  ///< why the export would fail
};

/// Reads everything that the export of a batch reads: its folder, every `Doc.dat` and every page.
/// Unlike an export it continues after an obstacle and returns all of them. Writes nothing.
BatchCheck checkBatch(const std::wstring& BatchID);

}  // namespace orvane::station
