#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/WindowServices.h"
#include "foundation/utf8_text.h"

namespace orvane::test {

struct Box {
  std::wstring text;
  std::wstring title;
  BoxIcon icon;
  bool operator==(const Box&) const = default;
};

/// The window of a test: installed for its own life, it keeps the boxes, closes each at once, and
/// counts the yields.
class RecordingWindow : public WindowServices {
 public:
  RecordingWindow() { installWindowServices(this); }
  ~RecordingWindow() override { installWindowServices(nullptr); }
  RecordingWindow(const RecordingWindow&) = delete;
  RecordingWindow& operator=(const RecordingWindow&) = delete;

  void showBox(std::wstring_view text, std::wstring_view title, BoxIcon icon) override {
    boxes.push_back({std::wstring(text), std::wstring(title), icon});
  }
  void yield() override {
    ++yields;
    if (onYield) onYield();
  }
  void showBusyPointer(bool busy) override { busyPointer.push_back(busy); }

  /// The boxes since the last call, a line each: "<text> | <title>", with " | !" for the icon.
  std::string takeBoxes() {
    std::string told;
    for (const Box& box : std::exchange(boxes, {})) {
      told +=
          toUtf8(box.text + L" | " + box.title) + (box.icon == BoxIcon::Critical ? " | !\n" : "\n");
    }
    return told;
  }

  std::vector<Box> boxes;
  std::vector<bool> busyPointer;  ///< the calls, in their order
  int yields = 0;
  std::function<void()> onYield;  ///< what the operator does meanwhile
};

}  // namespace orvane::test
