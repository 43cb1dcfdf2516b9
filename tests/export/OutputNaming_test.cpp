#include "export/OutputNaming.h"

#include <gtest/gtest.h>

#include "foundation/text_encoding.h"

namespace orvane {
namespace {

// The patterns are tested through the window's preview and through the runs above.
TEST(OutputNaming, FoldersAreJoinedWithoutNormalisation) {
  EXPECT_EQ(documentStem(L"页码 ", L"B1", L"v1.D", L"-", L"_"), L"") << "no pattern";
  EXPECT_EQ(batchOutputFolder(L"D:\\Out\\", true, L"B1"), L"D:\\Out\\\\B1");
  EXPECT_EQ(batchOutputFolder(L"D:\\Out", true, L"B1"), L"D:\\Out\\B1");
  // Below the root folder there is no doubled separator, which would make "B1" a server.
  EXPECT_EQ(docOutputFolder(batchOutputFolder(L"\\", true, L"B1"), true, L"D1"), L"\\B1\\D1");
  EXPECT_EQ(docOutputFolder(batchOutputFolder(L"\\", false, L"B1"), true, L"D1"), L"\\D1");
}

// An example as "batch/document/page = batch/document/page".
std::string shown(const NameCollision& example) {
  const auto page = [](const PageToName& p) {
    return p.batch + L"/" + p.document + L"/" + std::to_wstring(p.page);
  };
  return toUtf8(page(example.first) + L" = " + page(example.second)) + "|";
}

TEST(OutputNaming, CollisionsAreFoundBeforeARun) {
  const std::string sameDocuments = "2024-0001/0001/1 = 2024-0002/0001/1|";
  const std::string sameNumbers = "2024-0001/0001/1 = 2024-0001/0002/1|";
  const struct {
    std::wstring pattern, sp1, sp2, digits;
    bool batchFolder, docFolder, isMutiPage;
    std::string examples;
  } cases[] = {
      {kNameOfDocument, L"-", L"-", L"3", false, false, false, sameDocuments},
      {kNameOfDocument, L"-", L"-", L"3", false, true, true, sameDocuments},
      {kNameOfDocument, L"-", L"-", L"3", true, false, false, ""},
      {kNameOfDocument, L"-", L"-", L"0", true, false, false, "2024-0001/1/11 = 2024-0001/11/1|"},
      {kNameOfDocument, L"-", L"-", L"2", true, false, false, "2024-0001/1/101 = 2024-0001/11/1|"},
      {kNameOfDocument, L"-", L"-", L"0", true, true, false, ""},
      {kNameOfDocument, L"-", L"-", L"0", true, false, true, ""},
      {kNameOfPage, L"-", L"-", L"3", true, false, false, sameNumbers},
      {kNameOfPage, L"-", L"-", L"3", false, false, false, sameNumbers + sameDocuments},
      {kNameOfPage, L"-", L"-", L"0", true, true, false, ""},
      {L"", L"-", L"-", L"3", true, false, true, sameNumbers},
      {kNameOfDocumentAndPage, L"-", L"-", L"0", true, false, false, ""},
      {kNameOfDocumentAndPage, L"-", L"", L"0", true, false, false,
       "2024-0001/1/11 = 2024-0001/11/1|"},
      {kNameOfDocumentAndPage, L"-", L"0", L"0", true, false, false,
       "2024-0001/1/101 = 2024-0001/101/1|"},
      {kNameOfBatchAndDocument, L"-", L"-", L"3", false, false, false, ""},
      {kNameOfBatchAndDocument, L"", L"-", L"3", false, false, true, "1/11/1 = 11/1/1|"},
      {kNameOfBatchAndDocument, L"", L"-", L"0", false, true, false, "1/1/11 = 11/1/1|"},
      {kNameOfBatchDocumentAndPage, L"-", L"-", L"0", false, false, false, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    ExportSettings settings;
    settings.SavePath = L"\\out\\";
    settings.ReNameSp1 = c.sp1;
    settings.ReNameSp2 = c.sp2;
    settings.IsCreateBatchFolder = c.batchFolder;
    settings.IsCreateDocFolder = c.docFolder;
    settings.IsMutiPage = c.isMutiPage;
    const std::wstring mask = pageNumberMask(c.digits);
    std::string examples;
    for (const NameCollision& example : nameCollisions(settings, c.pattern, mask)) {
      examples += shown(example);
      EXPECT_EQ(outputFile(settings, c.pattern, mask, example.first),
                outputFile(settings, c.pattern, mask, example.second));
    }
    EXPECT_EQ(examples, c.examples);
    EXPECT_EQ(collisionWarning(settings, c.pattern, mask).empty(), c.examples.empty());
  }
}

TEST(OutputNaming, PageNumbersArePaddedAndNeverCut) {
  const std::pair<std::wstring, std::size_t> masks[] = {
      {L"3", 3},   {L"0", 0},   {L"-2", 0},   {L"abc", 0},       {L"", 0},
      {L"2.5", 2}, {L"3.5", 4}, {L"  4x", 4}, {L"32767", 32767}, {L"1e1", 10},
      {L".6", 1},  {L"+2", 2},  {L"-0.5", 0}};
  for (const auto& [text, width] : masks) {
    EXPECT_EQ(pageNumberMask(text), std::wstring(width, L'0')) << width;
  }
  for (const wchar_t* text : {L"32768", L"-32769", L"1e9", L"1e400"}) {
    EXPECT_ANY_THROW(pageNumberMask(text));
  }
  EXPECT_EQ(pageNumberText(7, L""), L"7");
  EXPECT_EQ(pageNumberText(7, L"000"), L"007");
  EXPECT_EQ(pageNumberText(1000, L"000"), L"1000");
}

}  // namespace
}  // namespace orvane
