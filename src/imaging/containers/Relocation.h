#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace orvane {

/// Where the kept ranges of a file go when all else is left out. Ranges keep their order, may
/// overlap, and are moved towards the front by whole alignment units, so that every offset only
/// ever gets smaller and what was aligned stays aligned.
class Relocation {
 public:
  struct Range {
    std::uint64_t from = 0;
    std::uint64_t length = 0;
    std::uint64_t to = 0;
  };

  /// Marks a range as kept. Ranges that follow one another closely become one.
  void keep(std::uint64_t from, std::uint64_t length);
  /// The number of ranges marked so far, after that joining.
  std::size_t marked() const { return ranges_.size(); }

  /// Gives every kept range its new place, from 0 on; the range at 0 stays. To be called once,
  /// after the last `keep`.
  void arrange(std::uint64_t alignment);
  /// The kept ranges in their order, none overlapping another.
  const std::vector<Range>& ranges() const { return ranges_; }
  /// The new place of an offset; nothing for one that is not kept.
  std::optional<std::uint64_t> moved(std::uint64_t offset) const;

 private:
  std::vector<Range> ranges_;
};

}  // namespace orvane
