#include "intake/PdfScan.h"

#include <new>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/pdf/qpdf.h"
#include "intake/page_file.h"
#include "intake/pdf_image.h"
#include "intake/pdf_opening.h"
#include "intake/pdf_page_image.h"
#include "intake/resolution.h"

namespace orvane {
namespace {

// Runs work with libqpdf, whose failures become Failure.
template <typename Work>
auto withQpdf(Work work) {
  try {
    return work();
  } catch (const Failure&) {
    throw;
  } catch (const QPDFExc& failure) {
    if (failure.getErrorCode() == qpdf_e_password) throw Failure(L"PDF 文件有密码，不能登记");
    throw Failure(L"PDF 文件损坏：" + fromUtf8(failure.getMessageDetail()));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    throw Failure(L"PDF 文件损坏：" + fromUtf8(failure.what()));
  }
}

class PdfScan : public SourceFile {
 public:
  explicit PdfScan(const std::wstring& path) {
    withQpdf([&] { open(path); });
    if (pages_.empty()) throw Failure(L"PDF 文件没有页");
  }

  std::int32_t pageCount() const override { return static_cast<std::int32_t>(pages_.size()); }

  void requirePage(std::int32_t page) const override {
    onPage(page, [&] { requirePdfImage(imageOf(page).image); });
  }

  void writePage(std::int32_t page, const std::wstring& target) const override {
    onPage(page, [&] {
      PdfPageImage found = imageOf(page);
      EncodedImage image = pdfImagePage(*pdf_, found.image);
      image.orientation = found.orientation;
      image.resolution =
          statedResolution(image.width / found.widthInches, image.height / found.heightInches, 1);
      writeReadablePage(target, image);
    });
  }

 private:
  void open(const std::wstring& path) {
    pdf_ = openPdf(path);
    pages_ = pdf_->getAllPages();
    // Of a damaged file, a page could be lost without a word.
    QPDFObjectHandle stated = pdf_->getRoot().getKey("/Pages").getKey("/Count");
    const long long count = stated.isInteger() ? stated.getIntValue() : 0;
    if (count == static_cast<long long>(pages_.size())) return;
    throw Failure(L"PDF 文件损坏：应有 " + std::to_wstring(count) + L" 页，只找到 " +
                  std::to_wstring(pages_.size()) + L" 页");
  }

  PdfPageImage imageOf(std::int32_t page) const {
    return imageOfPdfPage(*pdf_, pages_.at(static_cast<std::size_t>(page) - 1));
  }

  template <typename Work>
  void onPage(std::int32_t page, Work work) const {
    try {
      withQpdf(work);
    } catch (const Failure& failure) {
      throw Failure(L"第 " + std::to_wstring(page) + L" 页" + description(failure));
    }
  }

  std::unique_ptr<QPDF> pdf_;
  std::vector<QPDFObjectHandle> pages_;
};

}  // namespace

std::unique_ptr<SourceFile> openPdfScan(const std::wstring& path) {
  return std::make_unique<PdfScan>(path);
}

}  // namespace orvane
