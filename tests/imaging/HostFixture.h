#pragma once

#include <array>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "foundation/WindowServices.h"
#include "imaging/ImagingEngine.h"
#include "imaging/RecordingEngine.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {

/// A list that keeps its lines and marks each refresh with "~".
struct RecordingList : ProgressList {
  std::vector<std::wstring> lines;
  void addItem(std::wstring_view line) override { lines.emplace_back(line); }
  void clear() override { lines.clear(); }
  void refresh() override { lines.emplace_back(L"~"); }
};

template <typename Engine>
ImagingInstances instancesOf(std::array<Engine, 6>& engines) {
  return {engines[0], engines[1], engines[2], engines[3], engines[4], engines[5]};
}

/// A host with six recording instances and a list, for the operations that a window offers.
struct HostFixture : testing::Test {
  using Lines = std::vector<std::wstring>;

  TempStation station;
  RecordingWindow window;
  RecordingList list;
  std::array<RecordingEngine, 6> engines;
  RecordingEngine& control = engines[0];
  RecordingEngine& pageCount = engines[5];
  ImagingInstances instances = instancesOf(engines);
};

inline const std::string kClear = "SourceFile; Refresh; Picture";

}  // namespace orvane::test
