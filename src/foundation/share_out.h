#pragma once

#include <cstddef>
#include <functional>

namespace orvane {

/// Calls `work` for each item, 0 to `items` - 1, on up to `threads` threads, at least one.
/// Meanwhile, `observe` is called on this thread now and then. The first failure, also one of
/// `observe`, ends the work and is thrown when all threads have ended.
void shareOut(
    std::size_t items, unsigned threads, const std::function<void(std::size_t)>& work,
    const std::function<void()>& observe = [] {});

}  // namespace orvane
