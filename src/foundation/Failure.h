#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// A failure on its way to the end of the routine that catches it. `what()` is the platform's own
/// text of the failure (strerror, SQLite, libtiff, libjpeg) in UTF-8.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  explicit Failure(std::wstring_view text);
};

/// The failure of a system call: `strerror(error)`.
Failure systemFailure(int error);

/// The failure of a system call on `path`: "<path>: <strerror(error)>".
Failure systemFailure(int error, std::wstring_view path);

/// The text of a caught failure, for a log line or a box. Memory that ran out is told as the
/// platform tells it too, not by the name of a C++ type.
std::wstring description(const std::exception& failure);

}  // namespace orvane
