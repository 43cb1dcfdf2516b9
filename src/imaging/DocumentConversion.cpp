#include "imaging/DocumentConversion.h"

#include <cerrno>
#include <exception>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "imaging/mdlImageProcess.h"

namespace orvane {
namespace {

// The extension of a `SaveFileType`, empty for an unknown one.
std::wstring extensionOf(std::int16_t SaveFileType) {
  switch (SaveFileType) {
    case 0:
      return L".tif";
    case 1:
      return L".jpg";
    case 2:
      return L".pdf";
    default:
      return {};
  }
}

std::wstring withExtension(std::wstring path, std::int16_t SaveFileType) {
  static constexpr std::wstring_view kPlaceholder = L".ts";
  const std::wstring extension = extensionOf(SaveFileType);
  if (extension.empty()) return path;
  for (auto at = path.find(kPlaceholder); at != path.npos;
       at = path.find(kPlaceholder, at + extension.size())) {
    path.replace(at, kPlaceholder.size(), extension);
  }
  return path;
}

std::wstring pageFile(const std::wstring& SaveRootPath, int page, std::int16_t SaveFileType) {
  return SaveRootPath + L"\\" + zeroFilled(page, 3) + extensionOf(SaveFileType);
}

// Otherwise the source would be deleted, or its pages appended to itself.
void requireOtherFile(const std::wstring& source, const std::wstring& target) {
  if (mdlFolderAndFile::fileSystem().IsSamePlace(source, target)) {
    throw systemFailure(EEXIST, target);
  }
}

}  // namespace

bool DocumentConversion::ChangeToDocPDF(const std::wstring& sImageFilePath,
                                        const std::wstring& sChangedPDFFilePath,
                                        const std::wstring& /*sBatchErrorLogPath*/,
                                        std::int16_t SaveFileType, std::int16_t CompressionType) {
  std::wstring note = L"要转PDF的文件=" + sImageFilePath;
  return convert(sImageFilePath, note, L"ChangeToPDF", [&] {
    requireOtherFile(sImageFilePath, sChangedPDFFilePath);
    requireOtherFile(sImageFilePath, withExtension(sChangedPDFFilePath, SaveFileType));
    mdlFolderAndFile::FileDelete(sChangedPDFFilePath);
    note += L" sChangedPDFFilePath=" + sChangedPDFFilePath;
    return SaveAsDocument(sImageFilePath, SaveFileType, CompressionType, sChangedPDFFilePath);
  });
}

bool DocumentConversion::ChangeToPagePDF(const std::wstring& sImageFilePath,
                                         const std::wstring& sChangedPDFRootPath,
                                         const std::wstring& /*sBatchErrorLogPath*/,
                                         std::int16_t SaveFileType, std::int16_t CompressionType) {
  std::wstring note = L"要转PDF的文件=" + sImageFilePath;
  return convert(sImageFilePath, note, L"ChangeToPagePDF", [&] {
    requireOtherFile(sImageFilePath, sChangedPDFRootPath);
    requireOtherPageFiles(sImageFilePath, sChangedPDFRootPath, SaveFileType);
    mdlFolderAndFile::FileDelete(sChangedPDFRootPath);
    note = L" sChangedPDFFilePath=" + sChangedPDFRootPath;
    return SaveAsPage(sImageFilePath, SaveFileType, CompressionType, sChangedPDFRootPath);
  });
}

void DocumentConversion::requireOtherPageFiles(const std::wstring& source, const std::wstring& root,
                                               std::int16_t SaveFileType) {
  int pages = 0;
  try {
    pages = instances_.ImgControl.FilePageCount(source);
  } catch (const std::exception&) {  // the conversion reports it
  }
  for (int page = 1; page <= pages; ++page) {
    requireOtherFile(source, pageFile(root, page, SaveFileType));
  }
}

bool DocumentConversion::convert(const std::wstring& sImageFilePath, const std::wstring& note,
                                 const std::wstring& source, const std::function<bool()>& save) {
  try {
    const BusyPointer busy;
    const bool converted = save();
    if (!converted) listFailure(sImageFilePath);
    return converted;
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"转换PDF出错! Error-" + description(failure) + note + L"   0",
                               source);
    return false;
  }
}

// The line names page 1, whichever page failed.
void DocumentConversion::listFailure(const std::wstring& sImageFilePath) {
  listProcessLog_.addItem(L"转换PDF:" + sImageFilePath + L"--第1页失败.");
  listProcessLog_.refresh();
}

bool DocumentConversion::SaveAsDocument(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                                        std::int16_t CompressionType,
                                        const std::wstring& SaveFilePath) {
  try {
    const std::wstring target = withExtension(SaveFilePath, SaveFileType);
    mdlFolderAndFile::MakeFolderPath(target);
    const int pages = pageCount(PageFilePath);
    for (int page = 1; page <= pages; ++page) {
      savePage(PageFilePath, page, SaveFileType, CompressionType, target);
    }
    endPages();
    return true;
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(description(failure), L"SaveAsDocument");
    return false;
  }
}

bool DocumentConversion::SaveAsPage(const std::wstring& PageFilePath, std::int16_t SaveFileType,
                                    std::int16_t CompressionType,
                                    const std::wstring& SaveRootPath) {
  try {
    mdlFolderAndFile::MakeFolderPath(SaveRootPath);
    const int pages = pageCount(PageFilePath);
    for (int page = 1; page <= pages; ++page) {
      savePage(PageFilePath, page, SaveFileType, CompressionType,
               pageFile(SaveRootPath, page, SaveFileType));
    }
    endPages();
    return true;
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(description(failure), L"SaveAsPage");
    return false;
  }
}

std::int16_t DocumentConversion::pageCount(const std::wstring& PageFilePath) {
  return mdlImageProcess::TifPagesCount(instances_.ImgControl, instances_.ImgMerge, PageFilePath);
}

void DocumentConversion::savePage(const std::wstring& PageFilePath, int page,
                                  std::int16_t SaveFileType, std::int16_t CompressionType,
                                  const std::wstring& target) {
  const auto save = SaveFileType == 0 ? &SaveImage : &SavePDF;
  const bool bSaveMultiPage = mdlFolderAndFile::FileExist(target);
  save(instances_.ImgControl, PageFilePath, static_cast<std::int16_t>(page), target,
       CompressionType == 0, bSaveMultiPage);
}

void DocumentConversion::endPages() {
  instances_.ImgControl.SourceFile(L"");
  windowServices().yield();
}

namespace {

constexpr double kPdfDotsPerInch = 200.0;

void loadPage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
              const std::wstring& sSaveFilePath, bool bSaveMultiPage) {
  ImgControl.SaveMultiPage(bSaveMultiPage);
  ImgControl.PageNumber(PageNum);
  ImgControl.SourceFile(ImagePath);
  setTarget(ImgControl, sSaveFilePath);
}

}  // namespace

void DocumentConversion::SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                                   std::int16_t PageNum, const std::wstring& sSaveFilePath,
                                   bool bCompression, bool bSaveMultiPage) {
  try {
    loadPage(ImgControl, ImagePath, PageNum, sSaveFilePath, bSaveMultiPage);
    setTiffCodesByDepth(ImgControl, bCompression);
    ImgControl.SaveFile();
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(description(failure), L"SaveImage");
  }
}

void DocumentConversion::SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath,
                                 std::int16_t PageNum, const std::wstring& sSaveFilePath,
                                 bool bCompression, bool bSaveMultiPage) {
  try {
    loadPage(ImgControl, ImagePath, PageNum, sSaveFilePath, bSaveMultiPage);
    ImgControl.OutputResolutionX(kPdfDotsPerInch);
    ImgControl.OutputResolutionY(kPdfDotsPerInch);
    ImgControl.OutputType(kSavePdf);
    ImgControl.PdfCompression(ImgControl.BitsPerPixel() > 1 ? kPdfJpeg : kPdfGroup4);
    if (!bCompression) ImgControl.PdfCompression(kPdfNone);
    ImgControl.SaveFile();
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(description(failure), L"SavePDF");
  }
}

}  // namespace orvane
