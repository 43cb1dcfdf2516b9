#pragma once

#include <cstdint>
#include <vector>

namespace orvane::group4 {

/// One row of a bilevel page as the ascending positions where its colour changes: a row is white up
/// to the first one, black up to the second, and so on (the changing elements of ITU-T T.6). The
/// list ends with elements at the row's width and begins with one at -1, so that a reader may look
/// a few elements past either end.
class ChangingElements {
 public:
  static constexpr std::size_t kBefore = 1;  ///< elements at -1
  static constexpr std::size_t kAfter = 8;   ///< elements at the width

  /// An all-white row with room for `most` changes.
  ChangingElements(std::int32_t width, std::size_t most)
      : width_(width), positions_(kBefore + most + kAfter) {
    positions_[0] = -1;
    finish(0);
  }

  std::int32_t width() const { return width_; }

  bool isBlank() const { return first()[0] == width_; }

  /// The first changing element; the others follow.
  std::int32_t* first() { return positions_.data() + kBefore; }
  const std::int32_t* first() const { return positions_.data() + kBefore; }

  /// Ends the row after its first `count` changes.
  void finish(std::size_t count) {
    std::int32_t* end = first() + count;
    for (std::size_t i = 0; i < kAfter; ++i) end[i] = width_;
  }

 private:
  std::int32_t width_;
  std::vector<std::int32_t> positions_;
};

}  // namespace orvane::group4
