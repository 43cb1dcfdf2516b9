#include <exception>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "imaging/DocumentConversion.h"
#include "imaging/save_steps.h"

namespace orvane {
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
