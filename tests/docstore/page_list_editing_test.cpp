// Adding, moving and removing pages of a document's list.

#include <gtest/gtest.h>

#include "docstore/Document.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

constexpr const wchar_t* kLogged = L"Orvane成果导出 - Document:";

std::wstring pagesOf(const Document& document) {
  std::wstring pages;
  for (std::int16_t i = 1; i <= document.PageCount(); ++i) pages += document.GetPage(i);
  return pages;
}

TEST(PageListEditing, ByPosition) {
  const TempStation station;
  enum Edit { Add, Remove, Move };
  const struct {
    std::wstring before;  // a page for each letter
    Edit edit;
    std::int16_t position, target;
    std::wstring after, failure;
  } cases[] = {{L"AB", Add, -1, 0, L"ABX", L""},
               {L"AB", Add, -32768, 0, L"ABX", L""},
               {L"", Add, -1, 0, L"X", L""},
               {L"AB", Add, 1, 0, L"XAB", L""},
               {L"AB", Add, 2, 0, L"AXB", L""},
               {L"AB", Add, 3, 0, L"AB", L"AddPage-there is no page 3"},
               {L"AB", Add, 0, 0, L"AB", L"AddPage-there is no page 0"},
               {L"", Add, 1, 0, L"", L"AddPage-there is no page 1"},
               {L"AB", Remove, 1, 0, L"B", L""},
               {L"AB", Remove, 0, 0, L"AB", L"RemovePage-there is no page 0"},
               {L"AB", Remove, 3, 0, L"AB", L"RemovePage-there is no page 3"},
               {L"ABCD", Move, 3, 1, L"CABD", L""},
               {L"ABCD", Move, 4, 1, L"DABC", L""},
               {L"ABCD", Move, 1, 3, L"BACD", L""},
               {L"ABCD", Move, 1, 4, L"BCAD", L""},
               {L"ABCD", Move, 1, 2, L"BACD", L""},
               {L"ABCD", Move, 3, 4, L"ABDC", L""},
               {L"ABCD", Move, 2, 2, L"ABCD", L""},
               {L"ABCD", Move, 2, 5, L"ABCD", L"MovePage-there is no page 5"},
               {L"ABCD", Move, 0, 1, L"ABCD", L"MovePage-there is no page 0"}};
  std::vector<std::wstring> expectedLog;
  for (const auto& c : cases) {
    Document document;
    document.CreateDocument(L"D1");
    for (const wchar_t page : c.before) document.AddPage(std::wstring(1, page));
    const bool result = c.edit == Add      ? document.AddPage(L"X", c.position)
                        : c.edit == Remove ? document.RemovePage(c.position)
                                           : document.MovePage(c.position, c.target);
    EXPECT_EQ(result, c.failure.empty());
    EXPECT_EQ(pagesOf(document), c.after);
    if (!c.failure.empty()) expectedLog.push_back(kLogged + c.failure);
  }
  EXPECT_EQ(station.logEntries(), expectedLog);
}

TEST(PageListEditing, ByExactName) {
  Document document;
  document.CreateDocument(L"D1");
  for (const wchar_t* page : {L"A", L"A", L"a", L"A ", L"A"}) document.AddPage(page);
  EXPECT_EQ(document.RemovePageForName(L"A") + document.RemovePageForName(L"B"), L"TrueTrue");
  EXPECT_EQ(pagesOf(document), L"aA ");
}

TEST(PageListEditing, FailsWithoutAList) {
  const TempStation station;
  Document document;
  EXPECT_FALSE(document.AddPage(L"A") || document.RemovePage(1) || document.MovePage(1, 1));
  EXPECT_EQ(document.RemovePageForName(L"A"), L"False");
  std::vector<std::wstring> expected;
  for (const wchar_t* operation : {L"AddPage", L"RemovePage", L"MovePage", L"RemovePageForName"}) {
    expected.push_back(std::wstring(kLogged) + operation + L"-the document has no page list");
  }
  EXPECT_EQ(station.logEntries(), expected);
}

}  // namespace
}  // namespace orvane::test
