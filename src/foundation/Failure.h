#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// A failure. The routine that reports it catches it at its end. `what()` is the platform's own
/// text (strerror, SQLite, libtiff, libjpeg) in UTF-8.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  explicit Failure(std::wstring_view text);
};

/// The failure of a system call: `strerror(error)`.
Failure systemFailure(int error);

/// The failure of a system call on `path`: "<path>: <strerror(error)>".
Failure systemFailure(int error, std::wstring_view path);

/// The failure of a file's content or kind: "<path>: <reason>".
Failure fileFailure(std::wstring_view path, std::string_view reason);

/// The text of a caught failure, for a log line or a box. For memory that ran out it is the
/// platform's text, not the name of a C++ type.
std::wstring description(const std::exception& failure);

}  // namespace orvane
