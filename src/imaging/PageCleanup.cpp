#include "imaging/PageCleanup.h"

#include <exception>
#include <optional>
#include <string>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/plain_text.h"
#include "foundation/program.h"
#include "foundation/text_encoding.h"
#include "imaging/mdlImageProcess.h"

namespace orvane {

void WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName) {
  try {
    FileSystemObject& files = mdlFolderAndFile::fileSystem();
    if (!files.FileExists(FileName)) files.CreateFile(FileName);
    files.AppendFile(FileName, toAnsi(timeStamp() + L" :" + Message + L"\r\n\r\n"));
  } catch (const std::exception&) {  // an entry that cannot be written is lost
  }
}

namespace {

std::optional<double> rotationAngle(const std::wstring& AutoRotate) {
  if (AutoRotate == L"向右旋转90度") return -90.0;
  if (AutoRotate == L"向左旋转90度") return 90.0;
  if (AutoRotate == L"向右旋转180度") return -180.0;
  if (AutoRotate == L"向左旋转180度") return 180.0;
  return std::nullopt;
}

}  // namespace

void PageCleanup::loadPage(const std::wstring& sImageFilePath, int page) {
  ImagingEngine& ImgControl = instances_.ImgControl;
  ImgControl.Picture(nullptr);
  ImgControl.SourceFile(L"");
  ImgControl.Refresh();
  ImgControl.PageNumber(page);
  ImgControl.SourceFile(sImageFilePath);
}

// The margins are those of the straightened page, before it is turned.
void PageCleanup::cleanPage() {
  using namespace mdlBatchAutoProcessStep;
  ImagingEngine& ImgControl = instances_.ImgControl;
  if (AutoDeskew) {
    ImgControl.DeskewFirstStep();
    ImgControl.DeskewSecondStep(0);
  }
  if (AutoCrop.Used) {
    ImgControl.CropImage(AutoCrop.Left, AutoCrop.Up,
                         ImgControl.ImageWidth() - AutoCrop.Left - AutoCrop.Right,
                         ImgControl.ImageHeight() - AutoCrop.Up - AutoCrop.Bottom);
  }
  if (const std::optional<double> angle = rotationAngle(AutoRotate)) {
    ImgControl.RotateImage(*angle);
  }
  ImgControl.FinishingFilter(0.3F, 1);
}

bool PageCleanup::ImageDocProcess(const std::wstring& sImageFilePath,
                                  const std::wstring& sProcessedImageFilePath,
                                  const std::wstring& sBatchErrorLogPath) {
  try {
    ResetImagingControls(instances_);
    const int pageCount =
        toInt16(static_cast<double>(instances_.ImgPageCount.FilePageCount(sImageFilePath)));
    for (int page = 1; page <= pageCount; ++page) {
      loadPage(sImageFilePath, page);
      cleanPage();
      if (mdlImageProcess::SaveImageEx(instances_.ImgControl, sProcessedImageFilePath, true,
                                       true)) {
        continue;
      }
      const std::wstring message =
          L"图像处理失败--保存第" + std::to_wstring(page) + L"页的处理结果时出错！";
      listProcessLog_.addItem(message);
      listProcessLog_.refresh();
      WriteBatchErrorLog(message, sBatchErrorLogPath);
      // Where the pages were added to the source itself, it is not the clean-up's to delete.
      if (!mdlFolderAndFile::fileSystem().IsSamePlace(sImageFilePath, sProcessedImageFilePath)) {
        mdlFolderAndFile::FileDelete(sProcessedImageFilePath);
      }
      return false;
    }
    return true;
  } catch (const std::exception& failure) {
    ClearControl(instances_.ImgControl);
    const std::wstring message = L"frmMain-ImageDocProcess Err:" + description(failure);
    mdlFolderAndFile::LogWrite(message, kApplicationTitle);
    WriteBatchErrorLog(message, sBatchErrorLogPath);
    return false;
  }
}

}  // namespace orvane
