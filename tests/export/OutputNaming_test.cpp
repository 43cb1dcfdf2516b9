#include "export/OutputNaming.h"

#include <gtest/gtest.h>

#include "settings/NamingPattern.h"

namespace orvane {
namespace {

TEST(OutputNaming, FiveNamingPatternsInBothForms) {
  const struct {
    std::wstring pattern, stem;
  } cases[] = {{kNameOfDocument, L"v1.D"},
               {kNameOfPage, L""},
               {kNameOfDocumentAndPage, L"v1.D_"},
               {kNameOfBatchAndDocument, L"B1-v1.D"},
               {L"页码 ", L""},
               {kNameOfBatchDocumentAndPage, L"B1-v1.D_"}};
  for (const auto& [pattern, expected] : cases) {
    const std::wstring stem = documentStem(pattern, L"B1", L"v1.D", L"-", L"_");
    EXPECT_EQ(stem, expected);
    EXPECT_EQ(pageFilePath(L"F", stem, 2, L"000", 0), L"F\\" + expected + L"002.tif");
    EXPECT_EQ(multiPageFilePath(L"F\\", stem, 1), L"F\\" + expected + L".jpg");
  }
}

TEST(OutputNaming, FoldersAreJoinedPlainly) {
  const struct {
    bool batchFolder, docFolder;
    std::wstring path;
  } cases[] = {{false, false, L"D:\\Out\\x"},
               {true, false, L"D:\\Out\\\\B1\\x"},
               {false, true, L"D:\\Out\\\\D1\\x"},
               {true, true, L"D:\\Out\\\\B1\\D1\\x"}};
  for (const auto& c : cases) {
    const std::wstring batch = batchOutputFolder(L"D:\\Out\\", c.batchFolder, L"B1");
    const std::wstring folder = docOutputFolder(batch, c.docFolder, L"D1");
    EXPECT_EQ(multiPageFilePath(folder, L"x", 2), c.path + L".pdf");
  }
  EXPECT_EQ(batchOutputFolder(L"D:\\Out", true, L"B1"), L"D:\\Out\\B1");
}

TEST(OutputNaming, PageNumbersAreFilledToTheWidthInFrontAndNeverCut) {
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
