#pragma once

#include <string>

#include "foundation/Failure.h"

namespace orvane::test {

/// The text of the Failure that `work` throws; empty if it throws none.
template <typename Work>
std::string failureOf(Work work) {
  try {
    work();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return {};
}

}  // namespace orvane::test
