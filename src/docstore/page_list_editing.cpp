// The operations of Document that change its page list, in memory only.

#include <utility>

#include "docstore/Document.h"
#include "docstore/document_failures.h"
#include "foundation/numbers.h"

namespace orvane {

bool Document::AddPage(const std::wstring& sPageName, std::int16_t iInsertTo) {
  return withFailuresLogged(L"AddPage-", [&] {
    PageList& list = pages();
    if (iInsertTo < 0) {
      list.push_back(sPageName);
    } else {
      const std::ptrdiff_t index = indexOf(iInsertTo);
      list.insert(list.begin() + index, sPageName);
    }
    return true;
  });
}

bool Document::RemovePage(std::int16_t iPageIndex) {
  return withFailuresLogged(L"RemovePage-", [&] {
    const std::ptrdiff_t index = indexOf(iPageIndex);
    pages().erase(pages().begin() + index);
    return true;
  });
}

bool Document::MovePage(std::int16_t iSourcePageNum, std::int16_t iInsertBefore) {
  return withFailuresLogged(L"MovePage-", [&] {
    // In front of its own successor a page stands already; the two change places instead.
    if (iInsertBefore - iSourcePageNum == 1) std::swap(iSourcePageNum, iInsertBefore);
    const std::wstring name = pages()[static_cast<std::size_t>(indexOf(iSourcePageNum))];
    indexOf(iInsertBefore);  // refuses a wrong position before anything has changed

    if (!AddPage(name, iInsertBefore)) return failInLog(L"MovePage-插入页失败");
    const int oldPosition = iSourcePageNum > iInsertBefore ? iSourcePageNum + 1 : iSourcePageNum;
    if (!RemovePage(toInt16(oldPosition))) {
      return failInLog(L"MovePage-插入成功，但删除原来页时出错");
    }
    return true;
  });
}

std::wstring Document::RemovePageForName(const std::wstring& sPageName) {
  const bool done = withFailuresLogged(L"RemovePageForName-", [&] {
    std::erase(pages(), sPageName);
    return true;
  });
  return done ? L"True" : L"False";
}

std::ptrdiff_t Document::indexOf(std::int16_t position) const {
  const bool isPage = position >= 1 && static_cast<std::size_t>(position) <= pages().size();
  if (!isPage) throw Failure("there is no page " + std::to_string(position));
  return position - 1;
}

}  // namespace orvane
