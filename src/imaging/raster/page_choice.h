#pragma once

#include <cstdint>
#include <string>

#include "foundation/OutputFile.h"

namespace orvane {

/// Throws Failure unless `page`, from 1, is one of several pages.
inline void requireDeletablePage(const std::wstring& path, std::int32_t page,
                                 std::uint64_t pageCount) {
  if (page < 1 || static_cast<std::uint64_t>(page) > pageCount) {
    throw fileFailure(path, "there is no page " + std::to_string(page) + " among its " +
                                std::to_string(pageCount));
  }
  if (pageCount == 1) throw fileFailure(path, "the only page of a file cannot be removed");
}

}  // namespace orvane
