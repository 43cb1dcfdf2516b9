#pragma once

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "foundation/ProgressList.h"
#include "imaging/ImagingInstances.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {

/// A list that keeps its lines and marks each refresh with "~".
class RecordingList : public ProgressList {
 public:
  std::vector<std::wstring> lines;
  void addItem(std::wstring_view line) override { lines.emplace_back(line); }
  void clear() override { lines.clear(); }
  void refresh() override { lines.emplace_back(L"~"); }
};

/// A host with six recording instances and a list, for the operations that a window offers.
class HostFixture : public testing::Test {
 protected:
  using Calls = std::vector<std::string>;
  using Lines = std::vector<std::wstring>;

  TempStation station;
  RecordingWindow window;
  RecordingList list;
  std::array<RecordingEngine, 6> engines;
  RecordingEngine& control = engines[0];
  RecordingEngine& merge = engines[4];
  RecordingEngine& pageCount = engines[5];
  ImagingInstances instances{engines[0], engines[1], engines[2],
                             engines[3], engines[4], engines[5]};

  /// The calls on `ImgControl` behind its first `count`.
  Calls callsBehind(std::ptrdiff_t count) const {
    return {engines[0].calls.begin() + count, engines[0].calls.end()};
  }
};

}  // namespace orvane::test
