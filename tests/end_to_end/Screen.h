#pragma once

#include <cstdlib>

#include "support/Process.h"
#include "support/command.h"

namespace orvane::test {

/// The virtual screen of this test program.
class Screen {
 public:
  /// Starts the screen at the first call and sets `DISPLAY`.
  static void forAllTests() { static Screen screen; }

 private:
  // The display number is unique, because a server that ends removes the socket of its successor.
  // -noreset, because a reset after the last client rejects a client that connects at that moment.
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
