#pragma once

#include <deque>
#include <string>

namespace orvane {

/// Appends an entry to `sLogFile` or, if it is empty, to today's log. Throws nothing: a failure of
/// the log cannot be reported anywhere else.
void writeLogEntry(const std::wstring& sMessage, const std::wstring& sSource,
                   const std::wstring& sLogFile = {});

/// Collects the messages of the entries written during its lifetime, so that a failure can be shown
/// with its reason. Keeps the last few. Only the innermost of nested objects collects.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  void add(const std::wstring& message);
  /// The messages, oldest first, joined by line ends.
  std::wstring text() const;

 private:
  LogCapture* outer_;
  std::deque<std::wstring> messages_;
};

}  // namespace orvane
