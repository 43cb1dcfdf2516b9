#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <tiffio.h>

#include "foundation/Failure.h"
#include "imaging/page/ImageFile.h"
#include "imaging/page/TiffMessages.h"

namespace orvane {

/// A TIFF file open for reading in libtiff, with its own messages. Only the header has been read.
class TiffHandle {
 public:
  /// Throws Failure with path and reason for a file that cannot be read or is no TIFF.
  explicit TiffHandle(const std::wstring& path);
  ~TiffHandle();
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;

  TIFF* get() const { return tiff_; }
  const ImageFile& file() const { return source_.file; }
  TiffMessages& messages() { return messages_; }

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
  TiffMessages messages_;
  TIFF* tiff_ = nullptr;
};

}  // namespace orvane
