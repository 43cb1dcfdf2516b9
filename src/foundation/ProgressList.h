#pragma once

#include <string_view>

namespace orvane {

/// The run's report to the operator: `listProcessLog` of the window.
class ProgressList {
 public:
  virtual ~ProgressList() = default;

  /// Adds a line at the end.
  virtual void addItem(std::wstring_view line) = 0;

  /// Adds a line at the end that tells a failure, and why it failed: a few lines of text for
  /// whoever asks, or none. A list that keeps no reasons adds the line alone.
  virtual void addFailure(std::wstring_view line, std::wstring_view /*reason*/) { addItem(line); }

  /// Removes all lines.
  virtual void clear() = 0;

  /// Redraws the list at once.
  virtual void refresh() = 0;
};

}  // namespace orvane
