#include "export/SaveAsDocument.h"

#include <cerrno>

#include "docstore/Document.h"
#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/ScanTreeGuard.h"
#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "imaging/ImagingInstances.h"
#include "imaging/mdlImageProcess.h"

namespace orvane::mdlDocumentHelper {
namespace {

using PageSaver = decltype(&mdlImageProcess::SaveImage);

// A JPEG file holds one page, so a multi-page JPEG goes out as PDF under its ".jpg" name.
PageSaver pageSaver(std::int16_t SaveFileType, bool IsPageFile) {
  const bool asImage = SaveFileType == 0 || (SaveFileType == 1 && IsPageFile);
  return asImage ? &mdlImageProcess::SaveImage : &mdlImageProcess::SavePDF;
}

void clearAfterError(ImagingEngine& instance) {
  if (instance.ImagError() != 0) ClearControl(instance);
}

void logFailure(const std::wstring& text) {
  mdlFolderAndFile::LogWrite(L"DocumentHelper-SaveAsDocument-" + text, kApplicationTitle);
}

}  // namespace

bool SaveAsDocument(ImagingEngine& ImgMerge, ImagingEngine& ImgControl, ImagingEngine& ImgPageCount,
                    const std::wstring& DocumentID, std::int16_t SaveFileType, bool IsPageFile,
                    std::int16_t CompressionType, std::int16_t CompressionRatios,
                    const std::wstring& SavePath, const std::wstring& SubFolderType,
                    const std::wstring& NewDocumentID, ExportListener* listener) {
  ExportListener nobody;
  ExportListener& told = listener != nullptr ? *listener : nobody;
  std::wstring multiPageFile;  // set while it is known to be safe to write and to delete
  try {
    clearAfterError(ImgPageCount);
    clearAfterError(ImgMerge);
    Document document;
    if (!document.LoadDocument(DocumentID)) return false;

    OutputGuard guard(SavePath, DocumentID);
    mdlFolderAndFile::MakeFolderPath(mdlFolderAndFile::AppendBackslash(SavePath));
    guard.enterFolder();

    const PageSaver savePage = pageSaver(SaveFileType, IsPageFile);
    const int pageCount = document.PageCount();
    for (int index = 1; index <= pageCount; ++index) {
      told.beginPage(index, pageCount);
      const auto page = static_cast<std::int16_t>(index);
      const std::wstring target =
          IsPageFile ? pageFilePath(SavePath, NewDocumentID, page, SubFolderType, SaveFileType)
                     : multiPageFilePath(SavePath, NewDocumentID, SaveFileType);
      const bool append = !IsPageFile && index > 1;
      multiPageFile.clear();
      const std::optional<FileIdentity> older = guard.check(target);
      if (!IsPageFile) multiPageFile = target;
      if (append && !older) throw systemFailure(ENOENT, target);  // and its first pages with it
      if (older && !append) told.replace(*older, target);
      const std::wstring source = GetPagePath(document.DocName(), document.GetPage(page));
      if (!savePage(ImgControl, source, 1, target, CompressionType == 0, CompressionRatios,
                    append)) {
        mdlFolderAndFile::FileDelete(target);
        // What a saver throws is in the log by now; damage that it met it leaves to its caller.
        const std::wstring damage = ImgControl.damage();
        if (!damage.empty()) logFailure(source + L": " + damage);
        logFailure((IsPageFile ? L"按页保存时出错。页码：" : L"按多页文件保存时出错。页码：") +
                   std::to_wstring(index));
        return false;
      }
      if (IsPageFile || index == pageCount) told.addFile(target, IsPageFile ? 1 : pageCount);
      told.endPage();
      windowServices().yield();
    }
    return true;
  } catch (const std::exception& failure) {
    if (!multiPageFile.empty()) mdlFolderAndFile::FileDelete(multiPageFile);
    logFailure(description(failure));
    return false;
  }
}

}  // namespace orvane::mdlDocumentHelper
