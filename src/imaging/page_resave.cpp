#include <exception>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"
#include "imaging/mdlImageProcess.h"
#include "imaging/save_steps.h"

namespace orvane::mdlImageProcess {

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

}  // namespace orvane::mdlImageProcess
