#include "export/SaveAsDocument.h"

#include <cerrno>
#include <exception>
#include <functional>
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

void logFailure(const std::wstring& text) {
  mdlFolderAndFile::LogWrite(L"DocumentHelper-SaveAsDocument-" + text, kApplicationTitle);
}

void clearAfterError(ImagingEngine& instance) {
  if (instance.ImagError() != 0) ClearControl(instance);
}

/// Throws Failure if the output folders are no longer in their place.
using RequireOutput = std::function<void()>;

/// Deletes the file that is being written, unless it was completed or is in another folder now.
class UnfinishedFile {
 public:
  UnfinishedFile(std::wstring path, const RequireOutput& requireOutput)
      : path_(std::move(path)), requireOutput_(requireOutput) {}
  ~UnfinishedFile() {
    if (path_.empty()) return;
    try {
      requireOutput_();
      mdlFolderAndFile::FileDelete(path_);
    } catch (const std::exception&) {
    }
  }
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  void complete() { path_.clear(); }

 private:
  std::wstring path_;
  const RequireOutput& requireOutput_;
};

std::wstring outputFile(const DocumentExport& order, std::int16_t page) {
  return order.IsPageFile
             ? pageFilePath(order.SavePath, order.NewDocumentID, page, order.SubFolderType,
                            order.SaveFileType)
             : multiPageFilePath(order.SavePath, order.NewDocumentID, order.SaveFileType);
}

void exportPage(const DocumentExport& order, const std::wstring& source, const std::wstring& target,
                std::int16_t page, bool append, const RequireOutput& requireOutput) {
  const SaveChoice choice = saveChoice(order.SaveFileType, order.IsPageFile, order.CompressionType,
                                       order.CompressionRatios);
  if (savePage(order.ImgControl, source, 1, target, choice, append, requireOutput)) return;
  // The saver has logged what it caught. Damage in the page's data is logged here.
  const std::wstring damage = order.ImgControl.damage();
  if (!damage.empty()) logFailure(source + L": " + damage);
  throw Failure((order.IsPageFile ? L"按页保存时出错。页码：" : L"按多页文件保存时出错。页码：") +
                std::to_wstring(page));
}

void exportPages(const DocumentExport& order, const Document& document, const OutputGuard& guard,
                 ExportListener& listener) {
  const RequireOutput requireOutput = [&] {
    listener.requireOutputFolder();
    guard.requireFolder();
  };
  const std::int16_t pageCount = document.PageCount();
  std::optional<StagedFile> staged;  // for a share on which the file cannot grow
  for (int index = 1; index <= pageCount; ++index) {
    listener.beginPage(index, pageCount);
    const auto page = static_cast<std::int16_t>(index);
    const std::wstring target = outputFile(order, page);
    const bool append = !order.IsPageFile && page > 1;
    // A target that fails the check may belong to somebody else and is not deleted.
    const std::optional<FileIdentity> older = guard.check(target);
    UnfinishedFile file(target, requireOutput);
    if (append && !older) throw systemFailure(ENOENT, target);  // the first pages are lost
    if (older && !append) listener.replace(*older, target);
    if (append && page == 2 && StagedFile::isNeededFor(target)) staged.emplace(target);
    exportPage(order, GetPagePath(document.DocName(), document.GetPage(page)),
               staged ? staged->path() : target, page, append, requireOutput);
    if (staged && page == pageCount) {
      requireOutput();
      staged->copyToTarget();
    }
    if (order.IsPageFile || page == pageCount) {
      listener.addFile(target, order.IsPageFile ? 1 : pageCount);
    }
    file.complete();
    listener.endPage();
    windowServices().yield();
  }
}

}  // namespace

bool SaveAsDocument(const DocumentExport& order, ExportListener& listener) {
  try {
    clearAfterError(order.ImgPageCount);
    clearAfterError(order.ImgMerge);
    Document document;
    if (!document.LoadDocument(order.DocumentID)) return false;

    OutputGuard guard(order.SavePath, order.DocumentID);
    listener.requireOutputFolder();
    mdlFolderAndFile::MakeFolderPath(mdlFolderAndFile::AppendBackslash(order.SavePath));
    guard.enterFolder();
    exportPages(order, document, guard, listener);
    return true;
  } catch (const std::exception& failure) {
    logFailure(description(failure));
    return false;
  }
}

bool SaveAsDocument(ImagingEngine& ImgMerge, ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                    const std::wstring& DocumentID, std::int16_t SaveFileType, bool IsPageFile,
                    std::int16_t CompressionType, std::int16_t CompressionRatios,
                    const std::wstring& SavePath, const std::wstring& SubFolderType,
                    const std::wstring& NewDocumentID) {
  ExportListener nobody;
  return SaveAsDocument(
      {ImgMerge, ImgControl, ImgPageCount, DocumentID, SaveFileType, IsPageFile, CompressionType,
       CompressionRatios, SavePath, SubFolderType, NewDocumentID},
      nobody);
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
