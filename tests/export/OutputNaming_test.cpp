#include "export/OutputNaming.h"

#include <gtest/gtest.h>

#include "settings/NamingPattern.h"

namespace orvane {
namespace {

TEST(OutputNaming, FiveNamingPatternsInBothForms) {
  const struct {
    std::wstring pattern, stem, secondPage, multiPage;
  } cases[] = {
      {kNameOfDocument, L"D1", L"D1002.tif", L"D1.tif"},
      {kNameOfPage, L"", L"002.tif", L".tif"},
      {kNameOfDocumentAndPage, L"D1_", L"D1_002.tif", L"D1_.tif"},
      {kNameOfBatchAndDocument, L"B1-D1", L"B1-D1002.tif", L"B1-D1.tif"},
      {kNameOfBatchDocumentAndPage, L"B1-D1_", L"B1-D1_002.tif", L"B1-D1_.tif"},
      {L"", L"", L"002.tif", L".tif"},
      {L"页码 ", L"", L"002.tif", L".tif"},
  };
  for (const auto& c : cases) {
    const std::wstring stem = documentStem(c.pattern, L"B1", L"D1", L"-", L"_");
    EXPECT_EQ(stem, c.stem);
    EXPECT_EQ(pageFilePath(L"F", stem, 2, L"000", 0), L"F\\" + c.secondPage);
    EXPECT_EQ(multiPageFilePath(L"F\\", stem, 0), L"F\\" + c.multiPage);
  }
  EXPECT_EQ(documentStem(kNameOfBatchAndDocument, L"2022.B", L"v1.D", L"", L"_"), L"2022.Bv1.D");
}

TEST(OutputNaming, FoldersAreJoinedPlainly) {
  const struct {
    bool batchFolder, docFolder;
    std::wstring withSeparator, withoutSeparator;
  } cases[] = {
      {false, false, L"D:\\Out\\x", L"D:\\Out\\x"},
      {true, false, L"D:\\Out\\\\B1\\x", L"D:\\Out\\B1\\x"},
      {false, true, L"D:\\Out\\\\D1\\x", L"D:\\Out\\D1\\x"},
      {true, true, L"D:\\Out\\\\B1\\D1\\x", L"D:\\Out\\B1\\D1\\x"},
  };
  for (const auto& c : cases) {
    const auto path = [&](const std::wstring& SavePath) {
      const std::wstring batch = batchOutputFolder(SavePath, c.batchFolder, L"B1");
      return multiPageFilePath(docOutputFolder(batch, c.docFolder, L"D1"), L"x", 2);
    };
    EXPECT_EQ(path(L"D:\\Out\\"), c.withSeparator + L".pdf");
    EXPECT_EQ(path(L"D:\\Out"), c.withoutSeparator + L".pdf");
  }
}

TEST(OutputNaming, PageNumberMaskFollowsTheNumberInFront) {
  const struct {
    std::wstring text;
    std::size_t width;
  } cases[] = {{L"3", 3},   {L"0", 0},   {L"-2", 0},   {L"abc", 0},       {L"", 0},
               {L"2.5", 2}, {L"3.5", 4}, {L"  4x", 4}, {L"32767", 32767}, {L"1e1", 10},
               {L".6", 1},  {L"+2", 2},  {L"-0.5", 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(pageNumberMask(c.text), std::wstring(c.width, L'0')) << c.width;
  }
  for (const wchar_t* text : {L"32768", L"-32769", L"1e9", L"1e400"}) {
    EXPECT_ANY_THROW(pageNumberMask(text));
  }
}

TEST(OutputNaming, PageNumbersAreFilledNeverCut) {
  const struct {
    std::int16_t page;
    std::wstring mask, text;
  } cases[] = {{7, L"", L"7"},
               {7, L"000", L"007"},
               {999, L"000", L"999"},
               {1000, L"000", L"1000"},
               {32767, L"0000000", L"0032767"}};
  for (const auto& c : cases) EXPECT_EQ(pageNumberText(c.page, c.mask), c.text);
}

TEST(OutputNaming, ExtensionFollowsTheFileType) {
  EXPECT_EQ(outputExtension(0), L".tif");
  EXPECT_EQ(outputExtension(1), L".jpg");
  EXPECT_EQ(outputExtension(2), L".pdf");
  EXPECT_EQ(outputExtension(-1), L".pdf");
}

}  // namespace
}  // namespace orvane
