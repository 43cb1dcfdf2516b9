// The option controls: the rules between them, and how data.ini stores them.

#include "settings/ExportForm.h"

#include <gmock/gmock.h>
#include <sstream>

#include "settings/stored_settings.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

using enum OptionGroup;

TEST(ExportForm, AClickOnFileTypeOrPageFormRefillsTheNamingListAndKeepsTheSelectedPattern) {
  ExportForm form;
  form.offerAllRenameTypes();
  // The last click decides: a file type offers all patterns even for multi-page files.
  const struct {
    OptionGroup group;
    int button;
    std::size_t names;
  } clicks[] = {{MutiPage, 1, 2}, {MutiPage, 1, 2},     {SaveFileType, 1, 5}, {SaveFileType, 1, 5},
                {MutiPage, 0, 5}, {SaveFileType, 2, 5}, {MutiPage, 1, 2},     {SaveFileType, 0, 5}};
  for (const auto& [group, button, names] : clicks) {
    form.selectRenameType(1);
    const std::wstring stored = form.settings().ReNameFormat;
    form.clickButton(group, button);
    EXPECT_EQ(form.selectedButton(group), button);
    EXPECT_EQ(form.renameTypes().size(), names);
    EXPECT_EQ(form.renameTypeText(), L"");
    EXPECT_EQ(form.settings().ReNameFormat, stored);
  }
  EXPECT_EQ(form.settings().SaveFileType, 0);
  EXPECT_TRUE(form.settings().IsMutiPage);
  // Setting a button that is selected or does not exist runs no handler.
  form.selectRenameType(2);
  for (const int button : {0, 3, -1}) form.setButton(SaveFileType, button);
  EXPECT_EQ(form.selectedRenameType(), 2);
  form.setButton(SaveFileType, 2);
  EXPECT_EQ(form.selectedRenameType(), ExportForm::kNone);
}

/// What the window would show: the selected button of each group ("." for none), the naming list,
/// the texts, the check boxes, and "N" for an enabled naming frame.
std::string shown(const ExportForm& form) {
  std::ostringstream state;
  for (const OptionGroup group : {SaveFileType, MutiPage, CompressionType, CompressionRatios}) {
    const int button = form.selectedButton(group);
    state << (button < 0 ? "." : std::to_string(button));
  }
  state << " " << toUtf8(form.renameTypeText()) << "/" << form.renameTypes().size() << " ";
  for (const TextBox box : {TextBox::Sp1, TextBox::Sp2, TextBox::LiuShui}) {
    state << toUtf8(form.text(box));
  }
  state << " " << form.isChecked(CheckBox::CreateBatchFolder)
        << form.isChecked(CheckBox::CreateDocFolder) << (form.isFrameEnabled(4) ? "N" : "");
  return state.str();
}

/// A complete data.ini with some lines replaced.
std::string fileWith(const std::string& lines) {
  std::string text =
      "; 备注\n[Setting]\nPerName=王\nSavePath=\\成果\\\nx=1\n[Commit]\nSaveFileType=2\n"
      "IsMutiPage=False\nCompressionType=0\nCompressionRatios=1\nReNameFormat=页码\nReNameSp1=+\n"
      "ReNameSp2=_\nLiuShuiHao=4\nIsCreateDocFolder=True\nIsCreateBatchFolder=False\n";
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t start = text.find(line.substr(0, line.find('=') + 1));
    text.replace(start, text.find('\n', start) - start, line);
  }
  return text;
}

class ExportSettingsFile : public testing::Test {
 protected:
  /// Writes data.ini from UTF-8 text with LF line ends, through iconv.
  void write(const std::string& text) const {
    station.write("utf8.txt", text);
    station.shell("iconv -f UTF-8 -t GBK utf8.txt | sed 's/$/\\r/' > data.ini");
  }
  /// The content of data.ini as UTF-8 with LF line ends. In the file all must be CR LF.
  std::string content() const {
    EXPECT_EQ(station.shell("awk '!/\\r$/' data.ini"), "");
    return station.shell("iconv -f GBK -t UTF-8 data.ini | tr -d '\\r'");
  }
  /// What the window does when it is created.
  ExportForm load() const {
    ExportForm form;
    form.offerAllRenameTypes();
    LoadExportSettings(form);
    return form;
  }

  TempStation station;
  RecordingWindow window;
};

TEST_F(ExportSettingsFile, TheFirstStartWritesAllDefaultsAndTheCloseWritesTheShownPattern) {
  const auto defaults = [](const std::string& isMutiPage, const std::string& pattern) {
    return "[Setting]\nPerName=\nSavePath=\n[Commit]\nSaveFileType=0\nIsMutiPage=" + isMutiPage +
           "\nCompressionType=0\nCompressionRatios=0\nReNameFormat=" + pattern +
           "\nReNameSp1=-\nReNameSp2=-\nLiuShuiHao=3\nIsCreateDocFolder=False\n"
           "IsCreateBatchFolder=False\n";
  };
  const ExportForm form = load();
  EXPECT_EQ(content(), defaults("false", ""));
  EXPECT_EQ(shown(form), "0000 档案（件）名称/5 --3 00N");
  SaveExportSettings(form);
  EXPECT_EQ(content(), defaults("False", "档案（件）名称"));

  // A folder of that name can be neither read nor replaced, not even by root.
  station.shell("rm data.ini; mkdir data.ini");
  const ExportForm unwritten = load();
  EXPECT_EQ(shown(unwritten), shown(form));
  SaveExportSettings(unwritten);
  EXPECT_EQ(station.shell("ls -F"), "data.ini/\n");
  EXPECT_EQ(window.takeBoxes(), "");
}

TEST_F(ExportSettingsFile, TheValuesOfTheFileAreShownAndSavedAgain) {
  const struct {
    std::string lines, shown;
    std::string saved;  ///< these lines after the close; empty if unchanged
  } cases[] = {
      {"", "2001 页码/5 +_4 01N", ""},
      {"SaveFileType=7", ".001 页码/5 +_4 01N", ""},
      {"SaveFileType=1.5", "2001 页码/5 +_4 01N", "SaveFileType=2"},
      {"CompressionRatios=-3", "200. 页码/5 +_4 01N", ""},
      {"CompressionType=1\nCompressionRatios=2", "2012 页码/5 +_4 01", ""},
      {"ReNameFormat=随便", "2001 档案（件）名称/5 +_4 01N", "ReNameFormat=档案（件）名称"},
      {"IsMutiPage=TRUE", "2101 档案（件）名称/2 +_4 01N",
       "IsMutiPage=True\nReNameFormat=档案（件）名称"},
      {"IsMutiPage=-1\nReNameFormat=档案名称 + 档案（件）名称",
       "2101 档案名称 + 档案（件）名称/2 +_4 01N",
       "IsMutiPage=True\nReNameFormat=档案名称 + 档案（件）名称"},
      {"ReNameSp1=  \nReNameSp2=", "2001 页码/5 --4 01N", "ReNameSp1=-\nReNameSp2=-"},
      {"LiuShuiHao=三", "2001 页码/5 +_三 01N", ""},
      {"IsCreateDocFolder=0\nIsCreateBatchFolder=true", "2001 页码/5 +_4 10N",
       "IsCreateDocFolder=False\nIsCreateBatchFolder=True"}};
  for (const auto& [lines, expected, saved] : cases) {
    SCOPED_TRACE(lines);
    write(fileWith(lines));
    ExportForm form = load();
    EXPECT_EQ(shown(form), expected);
    EXPECT_EQ(form.settings().PerName + form.text(TextBox::SavePath), L"王\\成果\\");
    form.chooseSavePath(L"\\新\\☃");  // not a character of the code page
    SaveExportSettings(form);
    EXPECT_EQ(content(), fileWith("SavePath=\\新\\?\\\n" + (saved.empty() ? lines : saved)));
  }
  EXPECT_EQ(window.takeBoxes(), "");
}

TEST_F(ExportSettingsFile, ABadValueEndsTheLoadWithABoxAndLeavesTheRestUnread) {
  const struct {
    std::string line, reason, shown;
  } cases[] = {
      {"SaveFileType=x", "not a number: \"x\"", ".... /5 --3 00N"},
      {"CompressionType=1e9", "number outside -32768 to 32767", "20.. /5 --3 00N"},
      {"CompressionRatios=0 0", "not a number: \"0 0\"", "20.. /5 --3 00N"},
      {"IsCreateBatchFolder=F", "not a number: \"f\"", "2001 页码/5 +_4 01N"},
      {"IsMutiPage=abc", "not a number: \"abc\"", "2... /5 --3 00N"},
  };
  for (const auto& [line, reason, expected] : cases) {
    write(fileWith(line));
    EXPECT_EQ(shown(load()), expected);
    EXPECT_EQ(content(), fileWith(line));  // the bad value is kept, and no default is written
    EXPECT_EQ(window.takeBoxes(), "初始化导出档案参数出错! Error-" + reason +
                                      "（data.ini 的 [Commit] " + line + "） | Orvane成果导出\n");
    EXPECT_EQ(station.takeLog(), "");
  }
  SaveExportSettings(load());  // a close after a failed load writes the current settings
  EXPECT_EQ(content(), fileWith("IsMutiPage=False\nCompressionRatios=0\nReNameFormat=\nReNameSp1=\n"
                                "ReNameSp2=\nLiuShuiHao=3\nIsCreateDocFolder=False"));
}

}  // namespace
}  // namespace orvane::test
