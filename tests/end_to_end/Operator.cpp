#include "end_to_end/Operator.h"

#include <sstream>

#include "end_to_end/Screen.h"
#include "foundation/utf8_text.h"

namespace orvane::test {
namespace {

constexpr const char* kTitle = "Orvane成果导出";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace

Operator::Operator(const ExportStation& station)
    : program_({station.native("orvane-export").string()}) {
  waitFor("the window", [&] {
    window_ = windowOf(kTitle);
    return !window_.empty() || program_.exitCode();
  });
  if (window_.empty()) throw std::runtime_error("the program ended without a window");
}

void Operator::click(int x, int y) const {
  runCommand("xdotool mousemove --window " + window_ + " " + std::to_string(x) + " " +
             std::to_string(y) + " click 1");
}

int Operator::leave() {
  waitFor("the end of the program", [&] {
    if (!program_.exitCode()) click(304, 608);
    return program_.exitCode().has_value();
  });
  return *program_.exitCode();
}

void Operator::closeWindow() const {
  sendCloseRequest(std::stoul(window_));
}

std::vector<std::string> Operator::listEndingWith(const std::string& lastLine) const {
  std::vector<std::string> lines;
  outputOf("xdotool windowfocus " + window_);
  waitFor("the line " + lastLine, [&] {
    click(700, 300);
    runCommand("xdotool key ctrl+a ctrl+c");
    const CommandResult copied =
        runCommand("timeout 5 xclip -o -selection clipboard -t UTF8_STRING");
    if (copied.exitCode == 0) lines = linesOf(copied.output);
    return !lines.empty() && lines.back() == lastLine;
  });
  return lines;
}

void Operator::closeBox(const std::string& title) const {
  std::string box;
  waitFor("the box " + title, [&] { return !(box = windowOf(title)).empty(); });
  waitFor("the end of the box " + title, [&] {
    runCommand("xdotool windowfocus " + box + " key Return");
    return windowOf(title) != box;
  });
}

std::string Operator::windowOf(const std::string& title) const {
  std::string pattern;
  for (const char c : title)
    pattern += c == '[' || c == ']' ? std::string("\\") + c : std::string(1, c);
  const CommandResult found = runCommand("xdotool search --onlyvisible --name " +
                                         test::quoted("^" + pattern + "$") + " 2>/dev/null");
  return found.output.substr(0, found.output.find('\n'));
}

void layOut(const ExportStation& station, const ExportSettings& options) {
  const auto number = [](std::int16_t value) { return std::to_wstring(value); };
  const auto truth = [](bool value) { return std::wstring(value ? L"true" : L"false"); };
  const std::wstring text =
      L"[Setting]\r\nPerName=\r\nSavePath=" + options.SavePath + L"\r\n[Commit]\r\nSaveFileType=" +
      number(options.SaveFileType) + L"\r\nIsMutiPage=" + truth(options.IsMutiPage) +
      L"\r\nCompressionType=" + number(options.CompressionType) + L"\r\nCompressionRatios=" +
      number(options.CompressionRatios) + L"\r\nReNameFormat=" + options.ReNameFormat +
      L"\r\nReNameSp1=-\r\nReNameSp2=_\r\nLiuShuiHao=3\r\nIsCreateDocFolder=" +
      truth(options.IsCreateDocFolder) + L"\r\nIsCreateBatchFolder=" +
      truth(options.IsCreateBatchFolder) + L"\r\n";
  writeBytes(station.native("data.ini"), toAnsi(text));
  std::filesystem::copy_file(ORVANE_EXPORT, station.native("orvane-export"));
}

}  // namespace orvane::test
