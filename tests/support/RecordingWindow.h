#pragma once

#include <functional>
#include <string>
#include <vector>

#include "foundation/WindowServices.h"

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

  std::vector<Box> boxes;
  std::vector<bool> busyPointer;  ///< the calls, in their order
  int yields = 0;
  std::function<void()> onYield;  ///< what the operator does meanwhile
};

}  // namespace orvane::test
