#include "export/SaveAsDocument.h"

#include <cerrno>
#include <exception>
#include <optional>
#include <utility>

#include "docstore/Document.h"
#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/StagedFile.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "imaging/ImagingEngine.h"
#include "imaging/mdlImageProcess.h"

namespace orvane {
namespace mdlDocumentHelper {
namespace {

void logFailure(Outcome& document, const std::wstring& text) {
  const std::wstring message = L"DocumentHelper-SaveAsDocument-" + text;
  mdlFolderAndFile::LogWrite(message, kApplicationTitle);
  document.fail(message);
}

void clearAfterError(ImagingEngine& instance) {
  if (instance.ImagError() != 0) ClearControl(instance);
}

/// Throws Failure if the output folders are no longer in their place.
using RequireOutput = std::function<void()>;

std::wstring outputFile(const DocumentExport& order, std::int16_t page) {
  return order.IsPageFile
             ? pageFilePath(order.SavePath, order.NewDocumentID, page, order.SubFolderType,
                            order.SaveFileType)
             : multiPageFilePath(order.SavePath, order.NewDocumentID, order.SaveFileType);
}

/// The export of the pages of one document.
class PagesToExport {
 public:
  PagesToExport(const DocumentExport& order, const Document& document, const OutputGuard& guard,
                ExportListener& listener, Outcome& outcome)
      : order_(order),
        document_(document),
        pageCount_(document.PageCount()),
        guard_(guard),
        listener_(listener),
        outcome_(outcome) {}

  void exportAll() {
    for (int index = 1; index <= pageCount_; ++index) {
      listener_.beginPage(index, pageCount_);
      const auto page = static_cast<std::int16_t>(index);
      const std::wstring target = outputFile(order_, page);
      // A target that fails the check may belong to somebody else and is not deleted.
      const std::optional<FileIdentity> older = guard_.check(target);
      try {
        exportTo(target, older, page);
      } catch (const std::exception&) {
        removeUnfinished(target);
        throw;
      }
      listener_.endPage();
      windowServices().yield();
    }
  }

 private:
  void exportTo(const std::wstring& target, const std::optional<FileIdentity>& older,
                std::int16_t page) {
    const bool append = !order_.IsPageFile && page > 1;
    if (append && !older) throw systemFailure(ENOENT, target);  // the first pages are lost
    if (older && !append) listener_.replace(*older, target);
    if (append && page == 2 && StagedFile::isNeededFor(target)) staged_.emplace(target);
    save(page, staged_ ? staged_->path() : target, append);
    if (staged_ && page == pageCount_) {
      requireOutput();
      staged_->copyToTarget();
    }
    if (order_.IsPageFile || page == pageCount_) {
      listener_.addFile(target, order_.IsPageFile ? 1 : pageCount_);
    }
  }

  void save(std::int16_t page, const std::wstring& target, bool append) {
    const std::wstring source = GetPagePath(document_.DocName(), document_.GetPage(page));
    const SaveChoice choice = saveChoice(order_.SaveFileType, order_.IsPageFile,
                                         order_.CompressionType, order_.CompressionRatios);
    outcome_.take(savePage(order_.ImgControl, source, 1, target, choice, append,
                           [this] { requireOutput(); }));
    if (outcome_.ok) return;
    // The saver has logged what it caught. Damage in the page's data is logged here.
    const std::wstring damage = order_.ImgControl.damage();
    if (!damage.empty()) logFailure(outcome_, source + L": " + damage);
    throw Failure(
        (order_.IsPageFile ? L"按页保存时出错。页码：" : L"按多页文件保存时出错。页码：") +
        std::to_wstring(page));
  }

  // Throws Failure if the output folders are no longer in their place.
  void requireOutput() const {
    listener_.requireOutputFolder();
    guard_.requireFolder();
  }

  // Unless the file is in another folder now.
  void removeUnfinished(const std::wstring& target) const {
    try {
      requireOutput();
      mdlFolderAndFile::FileDelete(target);
    } catch (const std::exception&) {  // the failure that led here is the one to report
    }
  }

  const DocumentExport& order_;
  const Document& document_;
  const std::int16_t pageCount_;
  const OutputGuard& guard_;
  ExportListener& listener_;
  Outcome& outcome_;
  std::optional<StagedFile> staged_;  // for a share on which the file cannot grow
};

}  // namespace

Outcome SaveAsDocument(const DocumentExport& order, ExportListener& listener) {
  Outcome outcome;
  try {
    clearAfterError(order.ImgPageCount);
    clearAfterError(order.ImgMerge);
    Document document;
    outcome = document.load(order.DocumentID);
    if (!outcome.ok) return outcome;

    OutputGuard guard(order.SavePath, order.DocumentID);
    listener.requireOutputFolder();
    mdlFolderAndFile::MakeFolderPath(mdlFolderAndFile::AppendBackslash(order.SavePath));
    guard.enterFolder();
    PagesToExport(order, document, guard, listener, outcome).exportAll();
  } catch (const std::exception& failure) {
    logFailure(outcome, description(failure));
  }
  return outcome;
}

bool SaveAsDocument(ImagingEngine& ImgMerge, ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                    const std::wstring& DocumentID, std::int16_t SaveFileType, bool IsPageFile,
                    std::int16_t CompressionType, std::int16_t CompressionRatios,
                    const std::wstring& SavePath, const std::wstring& SubFolderType,
                    const std::wstring& NewDocumentID) {
  ExportListener nobody;
  return SaveAsDocument(
             {ImgMerge, ImgControl, ImgPageCount, DocumentID, SaveFileType, IsPageFile,
              CompressionType, CompressionRatios, SavePath, SubFolderType, NewDocumentID},
             nobody)
      .ok;
}

}  // namespace mdlDocumentHelper

// The pages that come next.

namespace {

using Names = std::vector<std::wstring>;

Names pagesOf(const std::wstring& document) {
  std::optional<Names> pages;
  try {
    readPageList(document, pages);
  } catch (const std::exception&) {  // not a document, or the export will fail too
    return {};
  }
  return std::move(pages).value_or(Names{});
}

/// The position of the next page that the export will request.
class Forecast {
 public:
  Forecast(Names documents, const SaveChoice& choice)
      : documents_(std::move(documents)), choice_(choice) {}

  std::optional<ExpectedPage> operator()() {
    while (page_ == pages_.size()) {
      if (nextDocument_ == documents_.size()) return std::nullopt;
      pages_ = pagesOf(documents_[nextDocument_++]);
      page_ = 0;
    }
    const std::wstring& document = documents_[nextDocument_ - 1];
    return ExpectedPage{GetPagePath(document, pages_[page_++]), choice_};
  }

 private:
  Names documents_;
  std::size_t nextDocument_ = 0;
  Names pages_;  ///< of the document before the next one
  std::size_t page_ = 0;
  SaveChoice choice_;
};

}  // namespace

SaveChoice saveChoice(std::int16_t SaveFileType, bool IsPageFile, std::int16_t CompressionType,
                      std::int16_t CompressionRatios) {
  const bool asImage = SaveFileType == 0 || (SaveFileType == 1 && IsPageFile);
  return {!asImage, SaveFileType == 1, CompressionType == 0, CompressionRatios};
}

PageForecast forecastOf(std::vector<std::wstring> documents, const SaveChoice& choice) {
  return Forecast(std::move(documents), choice);
}

}  // namespace orvane
