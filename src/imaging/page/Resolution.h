#pragma once

namespace orvane {

/// Dots per inch. A source that states none counts as 200.
struct Resolution {
  double x = 200.0;
  double y = 200.0;
};

}  // namespace orvane
