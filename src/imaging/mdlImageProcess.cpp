#include "imaging/mdlImageProcess.h"

#include <array>
#include <exception>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "imaging/jpeg/jpeg.h"

namespace orvane {
namespace {

void setFactors(PageToSave& page, std::int16_t CompressionRatios) {
  static constexpr std::array<JpegFactors, 3> kPairs{{{20, 16}, {40, 32}, {60, 48}}};
  if (CompressionRatios < 0 || CompressionRatios >= static_cast<int>(kPairs.size())) return;
  const JpegFactors& factors = kPairs[static_cast<std::size_t>(CompressionRatios)];
  page.JpegFactorMajor(factors.major);
  page.JpegFactorMinor(factors.minor);
}

void setPdfCodes(PageToSave& page, const SaveChoice& choice) {
  page.OutputType(kSavePdf);
  if (page.BitsPerPixel() > 1) {
    page.PdfCompression(kPdfJpeg);
    setFactors(page, choice.CompressionRatios);
  } else {
    page.PdfCompression(kPdfGroup4);
  }
  if (!choice.bCompression) page.PdfCompression(kPdfNone);
}

// Without compression the depth makes no difference and is not read.
void setImageCodes(PageToSave& page, const SaveChoice& choice) {
  if (!choice.bCompression) {
    page.OutputType(kSaveTiff);
    page.TiffCompression(kTiffLzw);
  } else if (page.BitsPerPixel() > 1) {
    page.OutputType(choice.isJpgName ? kSaveJpeg : kSaveTiffMultiBit);
    page.TiffCompression(kTiffJpeg);
    setFactors(page, choice.CompressionRatios);
  } else {
    page.OutputType(kSaveTiffBilevel);
    page.TiffCompression(kTiffGroup4);
  }
}

}  // namespace

void setCodes(PageToSave& page, const SaveChoice& choice) {
  choice.asPdf ? setPdfCodes(page, choice) : setImageCodes(page, choice);
}

void setTiffCodesByDepth(PageToSave& page, bool bCompression) {
  if (page.BitsPerPixel() > 1) {
    page.OutputType(kSaveTiffMultiBit);
    page.TiffCompression(kTiffJpeg);
  } else {
    page.OutputType(kSaveTiffBilevel);
    page.TiffCompression(kTiffGroup4);
  }
  if (!bCompression) {
    page.OutputType(kSaveTiff);
    page.TiffCompression(kTiffNone);
  }
}

void setTarget(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath) {
  if (sSaveFilePath.empty()) {
    ImgControl.TargetFile(ImgControl.SourceFile());
    return;
  }
  ImgControl.TargetFile(sSaveFilePath);
  mdlFolderAndFile::MakeFolderPath(mdlFolderAndFile::ParentPath(sSaveFilePath, L"\\"));
}

namespace {

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

}  // namespace

Outcome savePage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
                 const std::wstring& sSaveFilePath, const SaveChoice& choice, bool bSaveMultiPage,
                 const std::function<void()>& beforeWriting) {
  Outcome outcome;
  try {
    loadPage(ImgControl, ImagePath, PageNum, bSaveMultiPage);
    if (beforeWriting) beforeWriting();
    setTarget(ImgControl, sSaveFilePath);
    setCodes(ImgControl, choice);
    ImgControl.SaveFile();
    for (const std::wstring& remark : ImgControl.remarks()) outcome.add(remark);
    windowServices().yield();
    outcome.ok = ImgControl.ImagError() == 0;
    ClearControl(ImgControl);
  } catch (const std::exception& failure) {
    ImgControl.SaveMultiPage(false);
    ClearControl(ImgControl);
    // The error number is read after the clear, so it is that of the clear itself.
    const std::wstring message =
        std::wstring(choice.asPdf ? L"mdlImageProcess-SavePDF-" : L"mdlImageProcess-SaveImage-") +
        description(failure) + L" ImgControl.ImagError =" + std::to_wstring(ImgControl.ImagError());
    mdlFolderAndFile::LogWrite(message, kApplicationTitle);
    outcome.fail(message);
  }
  return outcome;
}

}  // namespace orvane

namespace orvane::mdlImageProcess {
namespace {

bool isJpgName(const std::wstring& sSaveFilePath) {
  return asciiLowerCase(mdlFolderAndFile::FileExtension(sSaveFilePath)) == L"jpg";
}

}  // namespace

bool SaveImage(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
               const std::wstring& sSaveFilePath, bool bCompression, std::int16_t CompressionRatios,
               bool bSaveMultiPage) {
  const SaveChoice choice{false, isJpgName(sSaveFilePath), bCompression, CompressionRatios};
  return savePage(ImgControl, ImagePath, PageNum, sSaveFilePath, choice, bSaveMultiPage, {}).ok;
}

bool SavePDF(ImagingEngine& ImgControl, const std::wstring& ImagePath, std::int16_t PageNum,
             const std::wstring& sSaveFilePath, bool bCompression, std::int16_t CompressionRatios,
             bool bSaveMultiPage) {
  const SaveChoice choice{true, isJpgName(sSaveFilePath), bCompression, CompressionRatios};
  return savePage(ImgControl, ImagePath, PageNum, sSaveFilePath, choice, bSaveMultiPage, {}).ok;
}

bool SaveImageEx(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath, bool bCompression,
                 bool bSaveMultiPage) {
  return SaveImageEx2(ImgControl, sSaveFilePath, bCompression, bSaveMultiPage);
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
