#include "intake/JpegScan.h"

#include "intake/jpeg_page.h"
#include "intake/page_file.h"

namespace orvane {
namespace {

class JpegScan : public SourceFile {
 public:
  explicit JpegScan(const std::wstring& path) : path_(path) {
    readJpegSummary(readWholeFile(path));
  }

  std::int32_t pageCount() const override { return 1; }

  void writePage(std::int32_t /*page*/, const std::wstring& target) const override {
    writeReadablePage(target, jpegPage(readWholeFile(path_), kMeaningInFile));
  }

 private:
  std::wstring path_;
};

}  // namespace

std::unique_ptr<SourceFile> openJpegScan(const std::wstring& path) {
  return std::make_unique<JpegScan>(path);
}

}  // namespace orvane
