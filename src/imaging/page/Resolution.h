#pragma once

namespace orvane {

/// Dots per inch. A source that states none counts as 200.
struct Resolution {
  double x = 200.0;
  double y = 200.0;
  bool isStated = false;  ///< by the source; otherwise an output resolution may take its place
};

}  // namespace orvane
