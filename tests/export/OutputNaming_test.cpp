#include "export/OutputNaming.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

// The patterns and forms are judged where a window shows them and a run writes them.
TEST(OutputNaming, FoldersAreJoinedPlainly) {
  EXPECT_EQ(documentStem(L"页码 ", L"B1", L"v1.D", L"-", L"_"), L"") << "no pattern";
  EXPECT_EQ(batchOutputFolder(L"D:\\Out\\", true, L"B1"), L"D:\\Out\\\\B1");
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
