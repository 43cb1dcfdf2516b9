#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tiffio.h>
#include <utility>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"

struct tiff;  // libtiff's own name for TIFF

namespace orvane {

/// A regular file, opened once and read by position. A small file is read into memory at once. A
/// larger one is read piece by piece; it is not mapped, so that a file that another process
/// truncates gives a short read and not a crash.
class ImageFile {
 public:
  /// Throws Failure with path and reason.
  explicit ImageFile(const std::wstring& path);

  std::uint64_t size() const { return size_; }

  /// All bytes of a small file; empty for a larger one.
  ByteView wholeContent() const { return {content_.get(), content_ ? size_ : 0}; }

  /// Copies up to `size` bytes from `offset` on and returns their number. A read that fails
  /// counts as the end of the file.
  std::size_t readAt(std::uint64_t offset, std::uint8_t* to, std::size_t size) const noexcept;

 private:
  std::size_t readFromDisk(std::uint64_t offset, std::uint8_t* to, std::size_t size) const noexcept;

  FileDescriptor descriptor_;
  std::uint64_t size_ = 0;
  std::unique_ptr<std::uint8_t[]> content_;
};

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
  const ImageFile& file() const { return source_.file; }

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
  std::string name_;  ///< the path in UTF-8
  Source source_;
  TiffMessages messages_;  ///< since the last call of `listen`
  TIFF* tiff_ = nullptr;
};

}  // namespace orvane
