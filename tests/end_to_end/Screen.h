#pragma once

#include <memory>

#include "end_to_end/Process.h"

namespace orvane::test {

/// A screen in memory, of this test program's own.
class Screen {
 public:
  /// Starts it at the first call; `DISPLAY` leads to it from then on.
  static void forAllTests() { static const Screen screen; }

 private:
  Screen();

  std::unique_ptr<Process> server_;
};

/// What the close box of a window sends to its program; no window manager is needed.
void sendCloseRequest(unsigned long window);

}  // namespace orvane::test
