#pragma once

#include <cstdlib>

#include "support/Process.h"
#include "support/command.h"

namespace orvane::test {

/// A screen in memory, of this test program's own.
class Screen {
 public:
  /// Starts it at the first call; `DISPLAY` leads to it from then on.
  static void forAllTests() { static Screen screen; }

 private:
  // A number of its own: a server that is just going takes the socket of its successor with it. And
  // no reset, which would turn away who comes in just as the last client leaves.
  Screen()
      : name_(":" + std::to_string(100 + getpid() % 50000)),
        server_("Xvfb " + name_ + " -screen 0 1280x1024x24 -dpi 96 -noreset -nolisten tcp") {
    setenv("DISPLAY", name_.c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    waitFor("the screen", [this] {
      return runCommand("xdotool getmouselocation").exitCode == 0 || server_.exitCode();
    });
    if (server_.exitCode()) throw std::runtime_error("Xvfb did not start");
  }

  std::string name_;
  Process server_;
};

}  // namespace orvane::test
