#pragma once

#include <cstdint>
#include <vector>

namespace orvane::group4 {

/// One row of a bilevel page as the positions where its colour changes, ascending: a row is white
/// up to the first one, black up to the second, and so on (the changing elements of ITU-T T.6). The
/// list ends in elements at the row's width, and before its first stands one at -1, so that a walk
/// may look a few elements past either end.
class ChangingElements {
 public:
  static constexpr std::size_t kBefore = 1;  ///< elements at -1
  static constexpr std::size_t kBehind = 8;  ///< elements at the width

  /// An all-white row. Room is taken for `most` changes.
  ChangingElements(std::int32_t width, std::size_t most)
      : width_(width), positions_(kBefore + most + kBehind) {
    positions_[0] = -1;
    finish(0);
  }

  std::int32_t width() const { return width_; }

  bool isBlank() const { return first()[0] == width_; }

  /// The first changing element; the others follow.
  std::int32_t* first() { return positions_.data() + kBefore; }
  const std::int32_t* first() const { return positions_.data() + kBefore; }

  /// Ends the row behind its first `count` changes.
  void finish(std::size_t count) {
    std::int32_t* end = first() + count;
    for (std::size_t i = 0; i < kBehind; ++i) end[i] = width_;
  }

 private:
  std::int32_t width_;
  std::vector<std::int32_t> positions_;
};

/// Finds the changing elements of a row of 1-bit pixels, the first one in the highest bit; 0 is
/// white. `row` needs room for a change at every pixel.
void scanChanges(const std::uint8_t* pixels, ChangingElements& row);

}  // namespace orvane::group4
