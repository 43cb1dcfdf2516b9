#pragma once

#include <array>
#include <cstdarg>
#include <cstdint>
#include <optional>
#include <string>
#include <tiffio.h>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/tiff/ImageFile.h"
#include "imaging/tiff/TiffVariant.h"

struct tiff;  // libtiff's own name for TIFF

namespace orvane {

/// The messages of libtiff about one file. Only the first message of a kind is kept; it usually
/// names the cause of the others. The handlers allocate nothing: an exception must not pass through
/// C.
class TiffMessages {
 public:
  /// The first error, or the first warning when there was no error, or `otherwise`.
  std::string reason(const char* otherwise) const;

  /// The first message about damaged image data.
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

/// A value that libtiff returned, and its messages meanwhile.
template <typename Value>
struct Heard {
  Value value;
  TiffMessages messages;
};

/// A TIFF file open for reading in libtiff. Only the header has been read.
class TiffHandle {
 public:
  /// Throws Failure with path and reason for a file that cannot be read or is no TIFF.
  explicit TiffHandle(const std::wstring& path);
  ~TiffHandle();
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;

  TIFF* get() const { return tiff_; }
  const std::wstring& path() const { return path_; }
  const ImageFile& file() const { return source_.file; }
  TiffVariant variant() const;

  /// Runs `work`, which calls libtiff for this file. Returns its value and the messages.
  template <typename Work>
  auto listen(Work work) {
    messages_ = {};
    auto value = work();
    return Heard<decltype(value)>{std::move(value), messages_};
  }

  /// Makes the directory at `offset` the current one. Throws Failure.
  void readDirectory(std::uint64_t offset);

  /// A failure of this file: "<path>: <reason>".
  Failure failure(const std::string& reason) const;

  /// What libtiff's callbacks read from.
  struct Source {
    ImageFile file;
    std::uint64_t position = 0;
  };

 private:
  std::wstring path_;
  Source source_;
  TiffMessages messages_;  ///< since the last call of `listen`
  TIFF* tiff_ = nullptr;
};

}  // namespace orvane
