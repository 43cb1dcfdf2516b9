#include "foundation/Failure.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "foundation/utf8.h"

namespace orvane {
namespace {

std::string errorText(int error) {
  char buffer[256];
  return strerror_r(error, buffer, sizeof buffer);  // the GNU form, which returns the text
}

}  // namespace

Failure::Failure(std::wstring_view text) : std::runtime_error(toUtf8(text)) {}

Failure systemFailure(int error) {
  return Failure(errorText(error));
}

Failure systemFailure(int error, std::wstring_view path) {
  return Failure(toUtf8(path) + ": " + errorText(error));
}

Failure fileFailure(std::wstring_view path, std::string_view reason) {
  return Failure(toUtf8(path) + ": " + std::string(reason));
}

std::wstring description(const std::exception& failure) {
  if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ||
      dynamic_cast<const std::length_error*>(&failure) != nullptr) {
    return fromUtf8(errorText(ENOMEM));
  }
  return fromUtf8(failure.what());
}

}  // namespace orvane
