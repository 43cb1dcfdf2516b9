#include "end_to_end/Screen.h"

#include <X11/Xlib.h>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace orvane::test {

namespace {

// Starts a server; the answer is its display number, or nothing when it could not start.
std::string startServer(std::unique_ptr<Process>& server) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("pipe failed");
  server = std::make_unique<Process>(
      std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                               "1280x1024x24", "-dpi", "96", "-nolisten", "tcp"});
  close(ends[1]);
  std::string answer(16, '\0');
  const ssize_t count = read(ends[0], answer.data(), answer.size());
  close(ends[0]);
  return count < 2 ? "" : answer.substr(0, static_cast<std::size_t>(count) - 1);
}

}  // namespace

Screen::Screen() {
  std::string number;  // two servers that start at the same time can both fail
  for (int tries = 0; number.empty() && tries < 5; ++tries) number = startServer(server_);
  if (number.empty()) throw std::runtime_error("Xvfb did not start");
  setenv("DISPLAY", (":" + number).c_str(), 1);
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
