#include "docstore/ScanTree.h"

#include <cerrno>
#include <cstdint>
#include <limits>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/letter_case.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"
#include "foundation/text_encoding.h"

namespace orvane {
namespace {

constexpr wchar_t kTerminator = L'$';
constexpr int kMostSeparators = std::numeric_limits<std::int16_t>::max();

}  // namespace

std::wstring gBatchFolder;

bool isFolderName(const std::wstring& name) {
  constexpr std::wstring_view kForbidden(L"\\/\0", 3);
  return !name.empty() && name != L"." && name != L".." &&
         name.find_first_of(kForbidden) == std::wstring::npos;
}

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

namespace {

std::string readDataFile(const std::wstring& sDocName,
                         std::optional<std::vector<std::wstring>>& pages) {
  FileSystemObject& files = mdlFolderAndFile::fileSystem();
  const std::wstring dataFile = GetDocDataPath(sDocName);
  try {
    std::string content = files.ReadFile(dataFile);
    pages.emplace();
    return content;
  } catch (const Failure&) {  // missing, or it cannot be read
    if (!files.FileExists(existingPath(dataFile))) {
      throw Failure(L"文档名【" + sDocName + L"】找不到当前文档的数据文件【Doc.dat】");
    }
    pages.emplace();
    throw;
  }
}

}  // namespace

void readPageList(const std::wstring& sDocName, std::optional<std::vector<std::wstring>>& pages) {
  const std::wstring content = fromAnsi(readDataFile(sDocName, pages));
  const std::wstring_view text = trimmed(content, L" ");
  if (text.empty()) throw Failure(L"文档名【" + sDocName + L"】 数据文件为空");
  appendPages(text, *pages);
}

void appendPages(std::wstring_view text, std::vector<std::wstring>& pages) {
  int separators = 0;
  std::size_t begin = 0;
  for (std::size_t end = text.find(kTerminator); end != text.npos;
       end = text.find(kTerminator, begin)) {
    if (++separators > kMostSeparators) throw systemFailure(EOVERFLOW);
    const std::wstring_view item = text.substr(begin, end - begin);
    if (!trimmed(item, L" ").empty()) pages.emplace_back(item);
    begin = end + 1;
  }
}

std::wstring pageListText(const std::vector<std::wstring>& pages) {
  std::wstring text;
  for (const std::wstring& page : pages) text += page + kTerminator;
  return text;
}

}  // namespace orvane
