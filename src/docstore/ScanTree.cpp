#include "docstore/ScanTree.h"

#include "foundation/FileDescriptor.h"
#include "foundation/existing_path.h"

namespace orvane {

std::wstring gBatchFolder;

std::wstring GetDocumentPath(const std::wstring& sDocName) {
  return gBatchFolder + L"\\" + sDocName + L"\\";
}

std::wstring GetPagePath(const std::wstring& sDocName, const std::wstring& sPageName) {
  return GetDocumentPath(sDocName) + sPageName + L".tif";
}

std::wstring GetDocDataPath(const std::wstring& sDocName) {
  return GetDocumentPath(sDocName) + L"Doc.dat";
}

bool isDocument(const std::wstring& sDocName) {
  const std::wstring folder = existingPath(GetDocumentPath(sDocName));
  const std::optional<std::wstring> dataFile = entryInAnyCase(folder, L"Doc.dat");
  if (dataFile) FileDescriptor::openRegularFile(folder + *dataFile);
  return dataFile.has_value();
}

}  // namespace orvane
