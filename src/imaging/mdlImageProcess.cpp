#include "imaging/mdlImageProcess.h"

#include <exception>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "imaging/ImagingInstances.h"
#include "imaging/save_steps.h"

namespace orvane::mdlImageProcess {
namespace {

bool isJpgName(const std::wstring& sSaveFilePath) {
  std::wstring extension = mdlFolderAndFile::FileExtension(sSaveFilePath);
  for (wchar_t& letter : extension) {
    if (letter >= L'a' && letter <= L'z') letter = static_cast<wchar_t>(letter - L'a' + L'A');
  }
  return extension == L"JPG";
}

void loadPage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
              bool bSaveMultiPage) {
  if (ImgControl.ImagError() != 0) {
    ImgControl.SaveMultiPage(false);
    ClearControl(ImgControl);
  }
  ImgControl.SaveMultiPage(bSaveMultiPage);
  ImgControl.PageNumber(PageNum);
  ImgControl.SourceFile(ImagePath);
}

void setImageCodes(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath, bool bCompression,
                   std::int16_t CompressionRatios) {
  if (!bCompression) {
    ImgControl.OutputType(kSaveTiff);
    ImgControl.TiffCompression(kTiffLzw);
    return;
  }
  if (ImgControl.BitsPerPixel() <= 1) {
    ImgControl.OutputType(kSaveTiffBilevel);
    ImgControl.TiffCompression(kTiffGroup4);
    return;
  }
  ImgControl.OutputType(isJpgName(sSaveFilePath) ? kSaveJpeg : kSaveTiffMultiBit);
  ImgControl.TiffCompression(kTiffJpeg);
  setJpegFactors(ImgControl, CompressionRatios);
}

void setPdfCodes(ImagingEngine& ImgControl, bool bCompression, std::int16_t CompressionRatios) {
  ImgControl.OutputType(kSavePdf);
  if (ImgControl.BitsPerPixel() > 1) {
    ImgControl.PdfCompression(kPdfJpeg);
    setJpegFactors(ImgControl, CompressionRatios);
  } else {
    ImgControl.PdfCompression(kPdfGroup4);
  }
  if (!bCompression) ImgControl.PdfCompression(kPdfNone);
}

bool savePage(ImagingEngine& ImgControl) {
  ImgControl.SaveFile();
  windowServices().yield();
  const bool saved = ImgControl.ImagError() == 0;
  ClearControl(ImgControl);
  return saved;
}

// The number is read after the clear: it tells what the clear itself left behind.
bool giveUp(ImagingEngine& ImgControl, const std::wstring& prefix, const std::exception& failure) {
  ImgControl.SaveMultiPage(false);
  ClearControl(ImgControl);
  mdlFolderAndFile::LogWrite(prefix + description(failure) + L" ImgControl.ImagError =" +
                                 std::to_wstring(ImgControl.ImagError()),
                             kApplicationTitle);
  return false;
}

}  // namespace

bool SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
               const std::wstring& sSaveFilePath, bool bCompression, std::int16_t CompressionRatios,
               bool bSaveMultiPage) {
  try {
    loadPage(ImgControl, ImagePath, PageNum, bSaveMultiPage);
    setTarget(ImgControl, sSaveFilePath);
    setImageCodes(ImgControl, sSaveFilePath, bCompression, CompressionRatios);
    return savePage(ImgControl);
  } catch (const std::exception& failure) {
    return giveUp(ImgControl, L"mdlImageProcess-SaveImage-", failure);
  }
}

bool SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
             const std::wstring& sSaveFilePath, bool bCompression, std::int16_t CompressionRatios,
             bool bSaveMultiPage) {
  try {
    loadPage(ImgControl, ImagePath, PageNum, bSaveMultiPage);
    setTarget(ImgControl, sSaveFilePath);
    setPdfCodes(ImgControl, bCompression, CompressionRatios);
    return savePage(ImgControl);
  } catch (const std::exception& failure) {
    return giveUp(ImgControl, L"mdlImageProcess-SavePDF-", failure);
  }
}

bool SaveImageEx(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath, bool bCompression,
                 bool bSaveMultiPage) {
  try {
    return SaveImageEx2(ImgControl, sSaveFilePath, bCompression, bSaveMultiPage);
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"mdlImageProcess-SaveImageEx-" + description(failure),
                               kApplicationTitle);
    return false;
  }
}

bool SaveImageEx2(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath, bool bCompression,
                  bool bSaveMultiPage) {
  try {
    setTarget(ImgControl, sSaveFilePath);
    ImgControl.SaveMultiPage(bSaveMultiPage);
    setTiffCodesByDepth(ImgControl, bCompression);
    ImgControl.SaveFile();
    windowServices().yield();
    return true;
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"mdlImageProcess-SaveImageEx2-" + description(failure),
                               kApplicationTitle);
    return false;
  }
}

namespace {

std::int16_t pageCount(ImagingEngine& image, const std::wstring& sFilePath) {
  return toInt16(static_cast<double>(image.FilePageCount(sFilePath)));
}

}  // namespace

std::int16_t TifPagesCount(ImagingEngine& ImgFirst, ImagingEngine& ImgSecond,
                           const std::wstring& sFilePath) {
  try {
    if (ImgFirst.ImagError() != 0) ClearControl(ImgFirst);
    if (ImgSecond.ImagError() != 0) ClearControl(ImgSecond);
    const std::int16_t count = pageCount(ImgFirst, sFilePath);
    return count == 1 ? pageCount(ImgSecond, sFilePath) : count;
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"mdlImageProcess-TifPagesCount Err:" + description(failure),
                               kApplicationTitle);
    return 1;
  }
}

}  // namespace orvane::mdlImageProcess
