#include "settings/ExportForm.h"

#include <gmock/gmock.h>

#include "settings/NamingPattern.h"

namespace orvane {
namespace {

using enum OptionGroup;
using testing::ElementsAreArray;

TEST(ExportForm, EveryClickOnFileTypeOrFormRefillsTheNamingListAndKeepsTheStoredPattern) {
  ExportForm form;
  form.offerAllRenameTypes();
  struct Click {
    OptionGroup group;
    int button;
    bool offersAll;
  };
  // The list follows the last click: a file type offers all patterns in the multi-page form too.
  const Click clicks[] = {{MutiPage, 1, false},    {MutiPage, 1, false},   {SaveFileType, 1, true},
                          {SaveFileType, 1, true}, {MutiPage, 0, true},    {SaveFileType, 2, true},
                          {MutiPage, 1, false},    {SaveFileType, 0, true}};
  for (const auto& [group, button, offersAll] : clicks) {
    form.selectRenameType(1);
    const std::wstring stored = form.settings().ReNameFormat;
    form.clickButton(group, button);
    EXPECT_EQ(form.selectedButton(group), button);
    EXPECT_EQ(form.selectedRenameType(), ExportForm::kNone);
    EXPECT_EQ(form.renameTypeText(), L"");
    EXPECT_EQ(form.settings().ReNameFormat, stored);
    if (offersAll) {
      EXPECT_THAT(form.renameTypes(), ElementsAreArray(kAllNamingPatterns));
    } else {
      EXPECT_THAT(form.renameTypes(), ElementsAreArray(kMultiPageNamingPatterns));
    }
  }
  EXPECT_EQ(form.settings().SaveFileType, 0);
  EXPECT_TRUE(form.settings().IsMutiPage);
}

TEST(ExportForm, SettingAButtonThatIsSetOrThatDoesNotExistCallsNoHandler) {
  ExportForm form;
  form.setButton(SaveFileType, 1);
  form.selectRenameType(2);
  for (const int button : {1, 3, 7, -1}) {
    form.setButton(SaveFileType, button);
    EXPECT_EQ(form.selectedRenameType(), 2) << button;
    EXPECT_EQ(form.selectedButton(SaveFileType), 1) << button;
  }
  form.setButton(SaveFileType, 2);
  EXPECT_EQ(form.selectedRenameType(), ExportForm::kNone);
}

TEST(ExportForm, TheChosenFolderGetsOneBackslashAndACancelEmptiesTheSettingAlone) {
  ExportForm form;
  for (const auto& [chosen, expected] :
       {std::pair{L"\\out\\成果", L"\\out\\成果\\"}, {L"\\", L"\\"}, {L"\\out\\", L"\\out\\"}}) {
    form.chooseSavePath(chosen);
    EXPECT_EQ(form.settings().SavePath, expected);
    EXPECT_EQ(form.text(TextBox::SavePath), expected);
  }
  form.chooseSavePath(L"");
  EXPECT_EQ(form.settings().SavePath, L"");
  EXPECT_EQ(form.text(TextBox::SavePath), L"\\out\\");
}

}  // namespace
}  // namespace orvane
