#pragma once

#include <string>

namespace orvane {

/// The result of a step that logs its own failures, for a caller that reports them elsewhere too.
struct Outcome {
  bool ok = true;
  /// The last few messages that were logged on the way, oldest first, one in a line. A step that
  /// succeeded can have some.
  std::wstring reason{};

  /// The result of a step that failed with one message, which has been logged.
  static Outcome failed(const std::wstring& message);

  /// Adds a message that has been logged.
  void add(const std::wstring& message);

  /// Adds the messages of a step that was part of this one, and takes its result over.
  void take(const Outcome& step);

  /// Adds the message of a failure, which has been logged.
  void fail(const std::wstring& message);

 private:
  void addLines(const std::wstring& lines);
};

}  // namespace orvane
