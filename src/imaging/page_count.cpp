#include <exception>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/numbers.h"
#include "foundation/program.h"
#include "imaging/ImagingInstances.h"
#include "imaging/mdlImageProcess.h"

namespace orvane::mdlImageProcess {
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
