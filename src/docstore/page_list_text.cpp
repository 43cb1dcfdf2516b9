#include "docstore/page_list_text.h"

#include <cerrno>
#include <cstdint>
#include <limits>

#include "docstore/ScanTree.h"
#include "foundation/Failure.h"
#include "foundation/ansi_text.h"
#include "foundation/existing_path.h"
#include "foundation/mdlFolderAndFile.h"

namespace orvane {
namespace {

constexpr wchar_t kTerminator = L'$';
constexpr int kMostSeparators = std::numeric_limits<std::int16_t>::max();

}  // namespace

void readPageList(const std::wstring& sDocName, std::optional<std::vector<std::wstring>>& pages) {
  FileSystemObject& files = mdlFolderAndFile::fileSystem();
  const std::wstring dataFile = existingPath(GetDocDataPath(sDocName));
  if (!files.FileExists(dataFile)) {
    throw Failure(L"文档名【" + sDocName + L"】找不到当前文档的数据文件【Doc.dat】");
  }
  pages.emplace();
  const std::wstring content = fromAnsi(files.ReadFile(dataFile));
  const std::wstring_view text = withoutOuterSpaces(content);
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
    if (!withoutOuterSpaces(item).empty()) pages.emplace_back(item);
    begin = end + 1;
  }
}

std::wstring pageListText(const std::vector<std::wstring>& pages) {
  std::wstring text;
  for (const std::wstring& page : pages) text += page + kTerminator;
  return text;
}

std::wstring_view withoutOuterSpaces(std::wstring_view text) {
  const std::size_t begin = text.find_first_not_of(L' ');
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(L' ') - begin + 1);
}

}  // namespace orvane
