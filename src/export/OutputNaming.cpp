#include "export/OutputNaming.h"

#include <algorithm>

#include "foundation/mdlFolderAndFile.h"
#include "foundation/numbers.h"
#include "settings/NamingPattern.h"

namespace orvane {
namespace {

// A root folder is a separator alone; with a second one the path would begin with a server.
std::wstring folderBelow(const std::wstring& folder, const std::wstring& name) {
  return folder == L"\\" ? folder + name : folder + L"\\" + name;
}

}  // namespace

std::wstring documentStem(const std::wstring& sPattern, const std::wstring& sBatchName,
                          const std::wstring& sDocName, const std::wstring& ReNameSp1,
                          const std::wstring& ReNameSp2) {
  if (sPattern == kNameOfDocument) return sDocName;
  if (sPattern == kNameOfDocumentAndPage) return sDocName + ReNameSp2;
  if (sPattern == kNameOfBatchAndDocument) return sBatchName + ReNameSp1 + sDocName;
  if (sPattern == kNameOfBatchDocumentAndPage) {
    return sBatchName + ReNameSp1 + sDocName + ReNameSp2;
  }
  return {};
}

std::wstring pageNumberMask(const std::wstring& txtLiuShui) {
  const int digits = toInt16(numericPrefix(txtLiuShui));
  return std::wstring(static_cast<std::size_t>(std::max(digits, 0)), L'0');
}

std::wstring pageNumberText(std::int16_t pageIndex, const std::wstring& mask) {
  std::wstring number = std::to_wstring(pageIndex);
  if (number.size() >= mask.size()) return number;
  return std::wstring(mask.size() - number.size(), L'0') + number;
}

std::wstring outputExtension(std::int16_t SaveFileType) {
  if (SaveFileType == 0) return L".tif";
  if (SaveFileType == 1) return L".jpg";
  return L".pdf";
}

std::wstring batchOutputFolder(const std::wstring& SavePath, bool IsCreateBatchFolder,
                               const std::wstring& BatchID) {
  return IsCreateBatchFolder ? folderBelow(SavePath, BatchID) : SavePath;
}

std::wstring docOutputFolder(const std::wstring& BatchOutputFolder, bool IsCreateDocFolder,
                             const std::wstring& sDocName) {
  return IsCreateDocFolder ? folderBelow(BatchOutputFolder, sDocName) : BatchOutputFolder;
}

std::wstring pageFilePath(const std::wstring& folder, const std::wstring& stem,
                          std::int16_t pageIndex, const std::wstring& mask,
                          std::int16_t SaveFileType) {
  return mdlFolderAndFile::AppendBackslash(folder) + stem + pageNumberText(pageIndex, mask) +
         outputExtension(SaveFileType);
}

std::wstring multiPageFilePath(const std::wstring& folder, const std::wstring& stem,
                               std::int16_t SaveFileType) {
  return mdlFolderAndFile::AppendBackslash(folder) + stem + outputExtension(SaveFileType);
}

}  // namespace orvane
