#include "docstore/ScanTree.h"

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

}  // namespace orvane
