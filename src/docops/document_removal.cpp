#include <exception>

#include "docops/mdlDocumentHelper.h"
#include "docstore/ScanTree.h"
#include "export/ScanTreeGuard.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/program.h"

namespace orvane::mdlDocumentHelper {
namespace {

// The picture stays: it is less than ClearControl.
void unload(ImagingEngine& ImgDelete) {
  ImgDelete.SourceFile(L"");
  ImgDelete.Refresh();
}

void logFailure(const std::wstring& message) {
  mdlFolderAndFile::LogWrite(L"DocumentHelper-" + message, kApplicationTitle);
}

}  // namespace

bool DeletePage(ImagingEngine& ImgDelete, const std::wstring& sFileName, std::int16_t iPageNum) {
  try {
    if (ImgDelete.ImagError() != 0) unload(ImgDelete);
    ImgDelete.DeletePageFromFile(sFileName, iPageNum);
    if (ImgDelete.ImagError() == 0) return true;
    unload(ImgDelete);
    return false;
  } catch (const std::exception& failure) {
    const std::int32_t error = ImgDelete.ImagError();
    logFailure(L"DeletePage-Err:" + description(failure) + L" ImgDelete.ImagError=" +
               std::to_wstring(error));
    if (error != 0) unload(ImgDelete);
    return false;
  }
}

bool DeleteDocumentEx(const std::wstring& sDocumentID) {
  try {
    if (gBatchFolder.empty() || !isFolderName(sDocumentID)) return false;
    return mdlFolderAndFile::FolderDelete(GetDocumentPath(sDocumentID));
  } catch (const std::exception& failure) {
    logFailure(L"DeleteDocumentEx-Err:" + description(failure));
    return false;
  }
}

std::wstring MakeOnlyOneFileName(const std::wstring& sDocumentID, std::int16_t iStartIndex) {
  constexpr int kLastIndex = 1000;
  try {
    const auto isTaken = [](const std::wstring& name) {
      return mdlFolderAndFile::FolderExist(GetDocumentPath(name));
    };
    if (!isTaken(sDocumentID)) return sDocumentID;
    for (int index = iStartIndex; index <= kLastIndex; ++index) {
      std::wstring candidate = sDocumentID + L"_" + std::to_wstring(index);
      if (!isTaken(candidate)) return candidate;
    }
    return {};
  } catch (const std::exception& failure) {
    logFailure(L"MakeOnlyOneFileName-" + description(failure));
    return {};
  }
}

}  // namespace orvane::mdlDocumentHelper
