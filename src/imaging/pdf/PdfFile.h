#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/OutputFile.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// Writes PDF files: PDF 1.4, PDF/A-1b (ISO 19005-1), one image a page, media box = pixels /
/// resolution in points. Images are None, Group4 (one strip that ends in an end-of-block) or
/// Jpeg (one strip). One object serves one imaging instance and remembers the layout of the file
/// that it wrote last.
class PdfFile {
 public:
  PdfFile();
  PdfFile(const PdfFile&) = delete;
  PdfFile& operator=(const PdfFile&) = delete;
  ~PdfFile();

  /// Writes a new file with one page. An older file of that name is replaced, never written into.
  /// A failed write leaves no file.
  void create(const std::wstring& path, const EncodedImage& image);

  /// Adds a page at the end of `path`, which is created when it is missing: the new objects
  /// overwrite the old cross-reference and trailer and are followed by new ones. The file is
  /// complete after every append. Throws Failure and leaves the file as it was when the write fails
  /// and when this program did not write the file.
  void append(const std::wstring& path, const EncodedImage& image);

  /// Removes page `page`, from 1, and its data. A file that this program wrote is then as if it had
  /// never had the page. In a file of another program, every stream stays as it is. Written through
  /// a FileReplacement. Throws Failure for a page that does not exist, for the only page of a file,
  /// and for a file of another program that is damaged, needs a password, is signed, or forbids it.
  static void deletePage(const std::wstring& path, std::int32_t page);

  /// The number of pages. Throws Failure for a damaged file and for one that needs a password.
  static std::int32_t pageCount(const std::wstring& path);

  /// True when the file begins as a PDF file does.
  static bool isPdf(const std::wstring& path);

 private:
  struct State;
  void createWith(OutputFile (*creation)(const std::wstring&), const std::wstring& path,
                  const EncodedImage& image);

  std::unique_ptr<State> state_;
};

}  // namespace orvane
