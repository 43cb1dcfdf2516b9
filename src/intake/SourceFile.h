#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// An image file as a scanner writes it, seen as pages that can become page files of a document.
/// The file is only read. An object may be used by one thread at a time.
class SourceFile {
 public:
  virtual ~SourceFile() = default;

  /// The number of pages, at least 1.
  virtual std::int32_t pageCount() const = 0;

  /// Throws Failure with the reason, for the operator, if a page, from 1, cannot be taken, as
  /// far as that can be known without decoding it.
  virtual void requirePage(std::int32_t /*page*/) const {}

  /// Writes page `page`, from 1, to the new TIFF file `target`, without any loss. The only page of
  /// a TIFF file is copied byte for byte. The page is then read as an export reads it. Throws
  /// Failure with the reason, and leaves no file then.
  virtual void writePage(std::int32_t page, const std::wstring& target) const = 0;
};

}  // namespace orvane
