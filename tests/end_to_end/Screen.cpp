#include "end_to_end/Screen.h"

#include <X11/Xlib.h>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace orvane::test {

namespace {

// The first line that comes; the server ends when nobody reads all of it.
std::string lineFrom(int end) {
  std::string line;
  for (char c = 0; read(end, &c, 1) == 1 && c != '\n';) line += c;
  close(end);
  return line;
}

}  // namespace

Screen::Screen() {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("pipe failed");
  // A number of its own, since a server that is just going takes the socket of its successor with
  // it; and no reset, which would turn away who comes in just as the last client leaves.
  const std::string display = ":" + std::to_string(100 + getpid() % 50000);
  server_ = std::make_unique<Process>(
      std::vector<std::string>{"Xvfb", display, "-displayfd", std::to_string(ends[1]), "-screen",
                               "0", "1280x1024x24", "-dpi", "96", "-noreset", "-nolisten", "tcp"});
  close(ends[1]);
  if (":" + lineFrom(ends[0]) != display) throw std::runtime_error("Xvfb did not start");
  setenv("DISPLAY", display.c_str(), 1);
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  setenv("LC_ALL", "C.UTF-8", 1);
}

void sendCloseRequest(unsigned long window) {
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr) throw std::runtime_error("no display");
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
  XSendEvent(display, window, False, NoEventMask, &event);
  XCloseDisplay(display);
}

}  // namespace orvane::test
