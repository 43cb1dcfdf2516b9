#include "imaging/pdf/foreign_pdf.h"

#include <exception>
#include <new>
#include <vector>

#include "foundation/Bytes.h"
#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "imaging/pdf/qpdf.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {
namespace {

// Runs work with libqpdf, whose failures become Failure.
template <typename Work>
auto withQpdf(const std::wstring& path, Work work) {
  try {
    return work();
  } catch (const Failure&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const QPDFExc& failure) {
    if (failure.getErrorCode() == qpdf_e_password) {
      throw fileFailure(path, "the PDF file needs a password");
    }
    throw fileFailure(path, "the PDF file is damaged: " + failure.getMessageDetail());
  } catch (const std::exception& failure) {
    throw fileFailure(path, std::string("the PDF file is damaged: ") + failure.what());
  }
}

void open(QPDF& pdf, const std::wstring& path) {
  pdf.setSuppressWarnings(true);
  pdf.setAttemptRecovery(false);  // a repair could lose pages
  pdf.processFile(nativePath(path).c_str());
}

// Throws Failure unless the file may be changed and every object in it can be read.
void requireChangeable(QPDF& pdf, const std::wstring& path) {
  constexpr long long kSignaturesExist = 1;  // ISO 32000-1 clause 12.7.2
  if (!pdf.allowModifyAssembly()) {
    throw fileFailure(path, "the PDF file forbids the removal of pages");
  }
  QPDFObjectHandle form = pdf.getRoot().getKey("/AcroForm");
  QPDFObjectHandle flags = form.isDictionary() ? form.getKey("/SigFlags") : form;
  if (flags.isInteger() && (flags.getIntValue() & kSignaturesExist) != 0) {
    throw fileFailure(path, "the PDF file is signed; a removal would break the signature");
  }
  pdf.getAllObjects();
  const std::vector<QPDFExc> warnings = pdf.getWarnings();
  if (!warnings.empty()) throw QPDFExc(warnings.front());
}

/// Passes what libqpdf writes on to a file, in larger pieces. libqpdf also writes in destructors,
/// so a failure is kept until `close`.
class FileEnd : public Pipeline {
 public:
  explicit FileEnd(OutputFile& file) : Pipeline("file", nullptr), file_(file) {}

  void write(unsigned char const* data, std::size_t length) override {
    constexpr std::size_t kPiece = std::size_t{1} << 18;
    try {
      if (failure_) return;
      buffer_.insert(buffer_.end(), data, data + length);
      if (buffer_.size() >= kPiece) flush();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }
  void finish() override {}

  /// Writes the rest. Throws what has failed.
  void close() {
    if (failure_) std::rethrow_exception(failure_);
    flush();
  }

 private:
  void flush() {
    file_.write(end_, buffer_);
    end_ += buffer_.size();
    buffer_.clear();
  }

  OutputFile& file_;
  std::uint64_t end_ = 0;
  Bytes buffer_;
  std::exception_ptr failure_;
};

void write(QPDF& pdf, OutputFile& target) {
  FileEnd end(target);
  QPDFWriter writer(pdf);
  writer.setOutputPipeline(&end);
  writer.setCompressStreams(false);
  writer.setDecodeLevel(qpdf_dl_none);
  writer.setNewlineBeforeEndstream(true);  // as PDF/A asks for
  if (!pdf.isEncrypted()) writer.setDeterministicID(true);
  writer.write();
  end.close();
}

}  // namespace

std::int32_t foreignPdfPageCount(const std::wstring& path) {
  return withQpdf(path, [&] {
    QPDF pdf;
    open(pdf, path);
    return static_cast<std::int32_t>(pdf.getAllPages().size());
  });
}

void copyForeignPdfWithout(const std::wstring& path, std::int32_t page, OutputFile& target) {
  withQpdf(path, [&] {
    QPDF pdf;
    open(pdf, path);
    requireChangeable(pdf, path);
    const std::vector<QPDFObjectHandle> pages = pdf.getAllPages();
    requireDeletablePage(path, page, pages.size());
    const QPDFObjectHandle& removed = pages[static_cast<std::size_t>(page) - 1];
    pdf.removePage(removed);
    // A bookmark may still refer to it, and would keep it.
    pdf.replaceObject(removed.getObjGen(), QPDFObjectHandle::newNull());
    write(pdf, target);
  });
}

}  // namespace orvane
