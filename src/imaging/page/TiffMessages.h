#pragma once

#include <array>
#include <cstdarg>
#include <optional>
#include <string>

struct tiff;

namespace orvane {

/// What libtiff says about one file. Only the first message of a kind is kept; it usually names the
/// cause of all others. Takes no memory while libtiff speaks: an exception must not pass through C.
class TiffMessages {
 public:
  void clear();

  /// The first error, or the first warning when there was no error, or `otherwise`.
  std::string reason(const char* otherwise) const;

  /// The first message that tells of damaged image data.
  std::optional<std::string> damage() const;

  /// Handlers for TIFFOpenOptions; `userData` is the TiffMessages of the file.
  static int onError(tiff*, void* userData, const char* module, const char* format, va_list values);
  static int onWarning(tiff*, void* userData, const char* module, const char* format,
                       va_list values);

 private:
  using Text = std::array<char, 400>;

  Text error_{};
  Text warning_{};
  Text damage_{};
};

}  // namespace orvane
