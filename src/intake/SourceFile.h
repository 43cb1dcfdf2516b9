#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orvane {

/// An image file as a scanner writes it, seen as pages that can become page files of a document.
/// The file is only read. An object may be used by one thread at a time.
class SourceFile {
 public:
  virtual ~SourceFile() = default;

  /// The number of pages, at least 1.
  virtual std::int32_t pageCount() const = 0;

  /// Throws Failure with the reason, for the operator, if page `page`, from 1, cannot be taken, as
  /// far as that can be known without decoding it.
  virtual void requirePage(std::int32_t page) const;

  /// Writes page `page`, from 1, to the new TIFF file `target`, without any loss. The only page of
  /// a TIFF file is copied byte for byte. The page is then read as an export reads it. Throws
  /// Failure with the reason, and leaves no file then.
  virtual void writePage(std::int32_t page, const std::wstring& target) const = 0;
};

/// Opens an image file of a scanner: TIFF, JPEG, PNG or PDF, by its first bytes, whatever its name
/// is. Returns null for a file that is no image by its first bytes and by its name. Throws Failure
/// with the reason, for the operator, for an image that cannot be taken: one of another kind (JPEG
/// 2000, JBIG2, BMP, GIF, WebP, HEIF), a damaged one, and a file that is only named like an image.
std::unique_ptr<SourceFile> openSourceFile(const std::wstring& path);

}  // namespace orvane
