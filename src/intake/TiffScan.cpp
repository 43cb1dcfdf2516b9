#include "intake/TiffScan.h"

#include "foundation/OutputFile.h"
#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_removal.h"
#include "intake/page_file.h"

namespace orvane {
namespace {

class TiffScan : public SourceFile {
 public:
  explicit TiffScan(const std::wstring& path) : path_(path), pages_(tiffPageCount(path)) {}

  std::int32_t pageCount() const override { return pages_; }

  void requirePage(std::int32_t page) const override { const TiffPage opened(path_, page); }

  void writePage(std::int32_t page, const std::wstring& target) const override {
    writeReadablePage(target, [&] {
      if (pages_ == 1) {
        copyFile(target);
      } else {
        extractTiffPage(path_, page, target);
      }
    });
  }

 private:
  void copyFile(const std::wstring& target) const {
    const OutputFile source = OutputFile::openToRead(path_);
    OutputFile copy = OutputFile::createAnew(target);
    copy.copyAll(source);
    copy.close();
  }

  std::wstring path_;
  std::int32_t pages_;
};

}  // namespace

std::unique_ptr<SourceFile> openTiffScan(const std::wstring& path) {
  return std::make_unique<TiffScan>(path);
}

}  // namespace orvane
