#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/WindowServices.h"
#include "foundation/text_encoding.h"

namespace orvane::test {

struct Box {
  std::wstring text;
  std::wstring title;
  BoxIcon icon;
  bool operator==(const Box&) const = default;
};

/// The window services of a test, installed while it exists. It records the boxes, closes each at
/// once, and counts the yields.
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

  /// The boxes since the last call, one per line: "<text> | <title>", with " | !" for the icon.
  std::string takeBoxes() {
    std::string lines;
    for (const Box& box : std::exchange(boxes, {})) {
      lines +=
          toUtf8(box.text + L" | " + box.title) + (box.icon == BoxIcon::Critical ? " | !\n" : "\n");
    }
    return lines;
  }

  std::vector<Box> boxes;
  std::vector<bool> busyPointer;  ///< the calls in order
  int yields = 0;
  std::function<void()> onYield;  ///< what the operator does during a yield
};

}  // namespace orvane::test
