#include "imaging/BitmapHandles.h"

#include <limits>
#include <string>
#include <utility>

#include "foundation/Failure.h"

namespace orvane {

std::int32_t BitmapHandles::put(Bitmap bitmap) {
  last_ = last_ == std::numeric_limits<std::int32_t>::max() ? 1 : last_ + 1;
  bitmaps_.insert_or_assign(last_, std::move(bitmap));
  return last_;
}

Bitmap BitmapHandles::take(std::int32_t handle) {
  auto found = bitmaps_.extract(handle);
  if (found.empty()) throw Failure("no bitmap has the handle " + std::to_string(handle));
  return std::move(found.mapped());
}

BitmapHandles& bitmapHandles() {
  static BitmapHandles handles;
  return handles;
}

}  // namespace orvane
