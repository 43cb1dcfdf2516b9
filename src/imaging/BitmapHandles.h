#pragma once

#include <cstdint>
#include <map>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// A bitmap on its way from one instance to another.
struct Bitmap {
  Raster pixels;
  Resolution resolution;
  Bytes iccProfile;  ///< of the page that they were copied from; empty: none
};

/// The bitmaps that are under way, by their handles. A handle is taken once.
class BitmapHandles {
 public:
  std::int32_t put(Bitmap bitmap);

  /// Throws Failure for a handle that stands for no bitmap.
  Bitmap take(std::int32_t handle);

 private:
  std::map<std::int32_t, Bitmap> bitmaps_;
  std::int32_t last_ = 0;
};

/// The handles of this process.
BitmapHandles& bitmapHandles();

}  // namespace orvane
