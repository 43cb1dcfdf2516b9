// Adding, moving and removing pages of a document's list.

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>

#include "docstore/Document.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;

class PageList : public testing::Test {
 protected:
  // A document whose pages have the letters of `pages` as their names.
  Document documentOf(const std::wstring& pages) {
    Document document;
    document.CreateDocument(L"D1");
    for (const wchar_t page : pages) document.AddPage(std::wstring(1, page));
    return document;
  }
  std::wstring pagesOf(const Document& document) {
    std::wstring pages;
    for (std::int16_t i = 1; i <= document.PageCount(); ++i) pages += document.GetPage(i);
    return pages;
  }
  // Reads the log and empties it.
  std::vector<std::wstring> newLogLines() {
    std::vector<std::wstring> lines = station.logEntries();
    std::filesystem::remove_all(station.native("Log"));
    return lines;
  }

  TempStation station;
};

TEST_F(PageList, EditsByPosition) {
  using Edit = std::function<bool(Document&)>;
  const auto add = [](std::int16_t to) {
    return Edit([to](Document& d) { return d.AddPage(L"X", to); });
  };
  const auto remove = [](std::int16_t at) {
    return Edit([at](Document& d) { return d.RemovePage(at); });
  };
  const auto move = [](std::int16_t from, std::int16_t to) {
    return Edit([=](Document& d) { return d.MovePage(from, to); });
  };
  const struct {
    std::wstring before;
    Edit edit;
    std::wstring after;
    std::wstring logged;  // empty: the edit succeeds
  } cases[] = {
      {L"AB", add(-1), L"ABX", L""},
      {L"AB", add(-32768), L"ABX", L""},
      {L"", add(-1), L"X", L""},
      {L"AB", add(1), L"XAB", L""},
      {L"AB", add(2), L"AXB", L""},
      {L"AB", add(3), L"AB", L"AddPage-there is no page 3"},
      {L"AB", add(0), L"AB", L"AddPage-there is no page 0"},
      {L"", add(1), L"", L"AddPage-there is no page 1"},
      {L"AB", remove(1), L"B", L""},
      {L"AB", remove(0), L"AB", L"RemovePage-there is no page 0"},
      {L"AB", remove(3), L"AB", L"RemovePage-there is no page 3"},
      {L"AB", remove(-1), L"AB", L"RemovePage-there is no page -1"},
      {L"ABCD", move(3, 1), L"CABD", L""},
      {L"ABCD", move(4, 1), L"DABC", L""},
      {L"ABCD", move(1, 3), L"BACD", L""},
      {L"ABCD", move(1, 4), L"BCAD", L""},
      {L"ABCD", move(1, 2), L"BACD", L""},
      {L"ABCD", move(3, 4), L"ABDC", L""},
      {L"ABCD", move(2, 2), L"ABCD", L""},
      {L"ABCD", move(2, 5), L"ABCD", L"MovePage-there is no page 5"},
      {L"ABCD", move(0, 1), L"ABCD", L"MovePage-there is no page 0"},
  };
  for (const auto& c : cases) {
    Document document = documentOf(c.before);
    EXPECT_EQ(c.edit(document), c.logged.empty());
    EXPECT_EQ(pagesOf(document), c.after);
    std::vector<std::wstring> expected;
    if (!c.logged.empty()) expected.push_back(L"Orvane成果导出 - Document:" + c.logged);
    EXPECT_EQ(newLogLines(), expected);
  }
}

TEST_F(PageList, RemovesEveryPageOfExactlyOneName) {
  const struct {
    std::wstring before, name, after;
  } cases[] = {{L"ABA", L"A", L"B"},
               {L"AAA", L"A", L""},
               {L"AaB", L"a", L"AB"},
               {L"AB", L"A ", L"AB"},
               {L"", L"A", L""}};
  for (const auto& c : cases) {
    Document document = documentOf(c.before);
    EXPECT_EQ(document.RemovePageForName(c.name), L"True");
    EXPECT_EQ(pagesOf(document), c.after);
  }
}

TEST_F(PageList, WithoutAListEveryEditFails) {
  Document document;
  EXPECT_FALSE(document.AddPage(L"A"));
  EXPECT_FALSE(document.RemovePage(1));
  EXPECT_FALSE(document.MovePage(1, 1));
  EXPECT_EQ(document.RemovePageForName(L"A"), L"False");
  std::vector<std::wstring> expected;
  for (const wchar_t* operation : {L"AddPage", L"RemovePage", L"MovePage", L"RemovePageForName"}) {
    expected.push_back(std::wstring(L"Orvane成果导出 - Document:") + operation +
                       L"-the document has no page list");
  }
  EXPECT_EQ(newLogLines(), expected);
}

}  // namespace
}  // namespace orvane::test
