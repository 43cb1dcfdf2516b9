#pragma once

#include <string_view>

namespace orvane {

/// The run's report to the operator: `listProcessLog` of the window.
class ProgressList {
 public:
  virtual ~ProgressList() = default;

  /// Adds a line at the end.
  virtual void addItem(std::wstring_view line) = 0;

  /// Removes all lines.
  virtual void clear() = 0;

  /// Redraws the list at once.
  virtual void refresh() = 0;
};

}  // namespace orvane
