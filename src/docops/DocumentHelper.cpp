#include "docops/DocumentHelper.h"

#include <exception>

#include "export/SaveAsDocument.h"
#include "foundation/Failure.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "imaging/ImagingControl.h"

namespace orvane {
namespace {

// The result of `operation`, or an empty one after a failure, which is not logged.
template <typename Operation>
auto orNothing(Operation operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (const std::exception&) {
    return {};
  }
}

// In the scan tree the folder, and an older thumbnail, can be spelled in another letter case.
std::wstring thumbnailOf(const std::wstring& sFilePath) {
  const std::wstring folder = mdlFolderAndFile::ParentPath(sFilePath, L"\\");
  return existingPath(existingPath(folder) + sFilePath.substr(folder.size()) + L"_B");
}

}  // namespace

DocumentHelper::DocumentHelper() {
  for (std::unique_ptr<ImagingEngine>& engine : engines_) {
    engine = std::make_unique<ImagingControl>();
  }
}

ImagingInstances DocumentHelper::instances() const {
  return {*engines_[0], *engines_[1], *engines_[2], *engines_[3], *engines_[4], *engines_[5]};
}

void DocumentHelper::ResetImagingControls() {
  orvane::ResetImagingControls(instances());
}

bool DocumentHelper::MergeDocument(const std::wstring& sNewDocumentID,
                                   const DispatchList* aryMergedDoc) {
  return orNothing([&] {
    ResetImagingControls();
    return mdlDocumentHelper::MergeDocument(instances().ImgControl, instances().ImgPageCount,
                                            sNewDocumentID, aryMergedDoc);
  });
}

bool DocumentHelper::MergeDocumentFor奇偶排序(const std::wstring& sNewDocumentID,
                                              const DispatchList* aryMergedDoc,
                                              bool MergeDirectionForBack) {
  return orNothing([&] {
    ResetImagingControls();
    return mdlDocumentHelper::MergeDocumentFor奇偶排序(sNewDocumentID, aryMergedDoc,
                                                       MergeDirectionForBack);
  });
}

bool DocumentHelper::SaveAsDocument(const std::wstring& DocumentID, std::int16_t SaveFileType,
                                    bool IsPageFile, std::int16_t CompressionType,
                                    std::int16_t CompressionRatios, const std::wstring& SavePath,
                                    const std::wstring& SubFolderType,
                                    const std::wstring& NewDocumentID) {
  return orNothing([&] {
    ResetImagingControls();
    const ImagingInstances imaging = instances();
    return mdlDocumentHelper::SaveAsDocument(
        imaging.ImgMerge, imaging.ImgControl, imaging.ImgPageCount, DocumentID, SaveFileType,
        IsPageFile, CompressionType, CompressionRatios, SavePath, SubFolderType, NewDocumentID);
  });
}

bool DocumentHelper::DeletePage(const std::wstring& sFileName, std::int16_t iPageNum) {
  return orNothing([&] {
    ResetImagingControls();
    return mdlDocumentHelper::DeletePage(instances().ImgDelete, sFileName, iPageNum);
  });
}

bool DocumentHelper::DeleteDocumentForDocumentID(const std::wstring& sDocumentID) {
  return orNothing([&] { return mdlDocumentHelper::DeleteDocumentEx(sDocumentID); });
}

std::wstring DocumentHelper::MakeOnlyOneFileName(const std::wstring& sDocumentID,
                                                 std::int16_t iStartIndex) {
  return orNothing(
      [&] { return mdlDocumentHelper::MakeOnlyOneFileName(sDocumentID, iStartIndex); });
}

bool DocumentHelper::CreateThumbnailImage(const std::wstring& sFilePath,
                                          std::int16_t ImageThumbSize) {
  return orNothing([&] {
    try {
      ResetImagingControls();
      writeThumbnail(sFilePath, ImageThumbSize);
      clearThumbnail();
      return true;
    } catch (const std::exception&) {
      clearThumbnail();
      return false;
    }
  });
}

void DocumentHelper::writeThumbnail(const std::wstring& sFilePath, std::int16_t ImageThumbSize) {
  if (ImageThumbSize == 0) throw Failure("the size of a thumbnail cannot be divided by 0");
  ImagingEngine& page = instances().ImgControl;
  ImagingEngine& thumbnail = instances().ImgCrop;
  page.PageNumber(1);
  page.SourceFile(sFilePath);
  thumbnail.hDIB(page.CopyDIB());
  thumbnail.ResizeImage(page.ImageWidth() / ImageThumbSize, page.ImageHeight() / ImageThumbSize);
  thumbnail.OutputType(kSaveJpeg);
  thumbnail.TargetFile(thumbnailOf(sFilePath));
  thumbnail.SaveFile();
}

void DocumentHelper::clearThumbnail() {
  instances().ImgCrop.SourceFile(L"");
  instances().ImgControl.SourceFile(L"");
  instances().ImgCrop.Picture(nullptr);
  instances().ImgControl.Picture(nullptr);
}

void DocumentHelper::Terminate() {
  try {
    ResetImagingControls();
  } catch (const std::exception& failure) {
    mdlFolderAndFile::LogWrite(L"Terminate-Err:" + description(failure),
                               std::wstring(kApplicationTitle) + L"[DocumentHelper]");
  }
}

}  // namespace orvane
