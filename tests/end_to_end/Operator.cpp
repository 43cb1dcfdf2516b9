#include "end_to_end/Operator.h"

#include <X11/Xlib.h>
#include <sstream>

namespace orvane::test {
namespace {

// The id of the visible window with exactly this title, or an empty text. (xdotool search --name
// would also match the older title property.)
std::string windowOf(const std::string& title) {
  return runCommand(
             "for window in $(xdotool search --onlyvisible --name . 2>/dev/null); do"
             " test \"$(xdotool getwindowname $window)\" = " +
             quoted(title) + " && printf %s $window && break; done")
      .output;
}

}  // namespace

Operator::Operator(const ExportStation& station, const std::string& environment)
    : program_("env " + environment + " " + quoted(station.native("orvane-export"))) {
  waitFor("the window", [&] {
    window_ = windowOf("Orvane成果导出");
    return !window_.empty() || program_.exitCode();
  });
  if (window_.empty()) throw NoWindow{*program_.exitCode()};
}

void Operator::click(int x, int y) const {
  runCommand("xdotool mousemove --window " + window_ + " " + std::to_string(x) + " " +
             std::to_string(y) + " click 1");
}

std::string Operator::olderTitle() const {
  return outputOf("xprop -id " + window_ + " -notype WM_NAME");
}

int Operator::leave() {
  waitFor("the end of the program", [&] {
    if (!program_.exitCode()) click(304, 608);
    return program_.exitCode().has_value();
  });
  return *program_.exitCode();
}

// Sends the message of a window manager; this screen has none.
void Operator::closeWindow() const {
  Display* const display = XOpenDisplay(nullptr);
  if (display == nullptr) throw std::runtime_error("no display");
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = std::stoul(window_);
  event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
  XSendEvent(display, event.xclient.window, False, NoEventMask, &event);
  XCloseDisplay(display);
}

std::string Operator::listEndingWith(const std::string& lastLine) const {
  std::string list;
  waitFor("the line " + lastLine, [&] {
    list = runCommand("xdotool windowfocus " + window_ + " mousemove --window " + window_ +
                      " 700 300 click 1 key ctrl+a ctrl+c && "
                      "timeout 5 xclip -o -selection clipboard -t UTF8_STRING")
               .output;
    return list.ends_with("\n" + lastLine);
  });
  return list;
}

void Operator::endDisplay() const {
  runCommand("xdotool windowkill " + window_);
}

void Operator::chooseFolder(const std::string& path) const {
  click(364, 40);
  waitForBox("成果输出文件夹");
  const std::string chooser = windowOf("成果输出文件夹");
  runCommand("printf %s " + quoted(path) + " | xclip -selection clipboard >/dev/null 2>&1");
  runCommand("xdotool windowfocus --sync " + chooser + " key Tab ctrl+a ctrl+v Return");
  waitFor("the end of the chooser", [&] { return windowOf("成果输出文件夹").empty(); });
}

void Operator::waitForBox(const std::string& title) const {
  waitFor("the box " + title, [&] { return !windowOf(title).empty(); });
}

void Operator::closeBox(const std::string& title) const {
  waitForBox(title);
  const std::string box = windowOf(title);
  waitFor("the end of the box " + title, [&] {
    runCommand("xdotool windowfocus " + box + " key Return");
    return windowOf(title) != box;
  });
}

void layOut(const ExportStation& station, const ExportSettings& options) {
  std::wostringstream text;
  text << std::boolalpha << L"[Setting]\r\nPerName=\r\nSavePath=" << options.SavePath
       << L"\r\n[Commit]\r\nSaveFileType=" << options.SaveFileType  //
       << L"\r\nIsMutiPage=" << options.IsMutiPage << L"\r\nCompressionType="
       << options.CompressionType << L"\r\nCompressionRatios=" << options.CompressionRatios
       << L"\r\nReNameFormat=" << options.ReNameFormat
       << L"\r\nReNameSp1=-\r\nReNameSp2=_\r\nLiuShuiHao=3\r\nIsCreateDocFolder="
       << options.IsCreateDocFolder << L"\r\nIsCreateBatchFolder=" << options.IsCreateBatchFolder
       << L"\r\n";
  station.write("data.ini", toAnsi(text.str()));
  std::filesystem::copy_file(ORVANE_EXPORT, station.native("orvane-export"));
}

}  // namespace orvane::test
