#pragma once

#include <functional>
#include <string>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"
#include "intake/SourceFile.h"

namespace orvane {

/// A file of one page, whose content becomes an encoded image.
class OnePageScan : public SourceFile {
 public:
  /// What is done with the content of a file. Both throw Failure with the reason, for the operator.
  struct Kind {
    std::function<void(ByteView file)> requireHead;
    std::function<EncodedImage(ByteView file)> encode;
  };

  /// Reads the head of the file.
  OnePageScan(const std::wstring& path, Kind kind);

  std::int32_t pageCount() const override { return 1; }
  void writePage(std::int32_t page, const std::wstring& target) const override;

 private:
  std::wstring path_;
  Kind kind_;
};

}  // namespace orvane
