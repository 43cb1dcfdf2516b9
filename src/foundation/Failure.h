#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// A failure, which is caught at the end of the routine that reports it. `what()` is the text of
/// the platform (strerror, SQLite, libtiff, libjpeg) in UTF-8.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  explicit Failure(std::wstring_view text);
};

/// The failure of a system call: `strerror(error)`.
Failure systemFailure(int error);

/// The failure of a system call on `path`: "<path>: <strerror(error)>".
Failure systemFailure(int error, std::wstring_view path);

/// A failure due to the content or the type of a file: "<path>: <reason>".
Failure fileFailure(std::wstring_view path, std::string_view reason);

/// The text of a caught failure, for a log line or a box. If memory ran out, it is the text of the
/// platform, not the name of a C++ type.
std::wstring description(const std::exception& failure);

}  // namespace orvane
