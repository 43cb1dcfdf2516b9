#include "settings/ExportSettingsFile.h"

#include <gmock/gmock.h>
#include <sstream>

#include "foundation/utf8_text.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

using enum OptionGroup;
using testing::AllOf;
using testing::Not;
using testing::StartsWith;

/// What the window would show: the buttons of the groups in their order ("." for none), the naming
/// list, the texts, the ticks, and "N" for an enabled naming frame.
std::string shown(const ExportForm& form) {
  std::ostringstream state;
  for (const OptionGroup group : {SaveFileType, MutiPage, CompressionType, CompressionRatios}) {
    const int button = form.selectedButton(group);
    state << (button < 0 ? "." : std::to_string(button));
  }
  state << " " << toUtf8(form.renameTypeText()) << "/" << form.renameTypes().size() << " "
        << toUtf8(form.text(TextBox::SavePath)) << "|" << toUtf8(form.text(TextBox::Sp1)) << "|"
        << toUtf8(form.text(TextBox::Sp2)) << "|" << toUtf8(form.text(TextBox::LiuShui)) << " "
        << form.isChecked(CheckBox::CreateBatchFolder) << form.isChecked(CheckBox::CreateDocFolder)
        << (form.isFrameEnabled(4) ? "N" : "");
  return state.str();
}

class ExportSettingsFile : public testing::Test {
 protected:
  /// Writes data.ini from UTF-8 text with plain line ends, by iconv.
  void write(const std::string& text) const {
    writeBytes(station.native("utf8.txt"), text);
    outputOf("iconv -f UTF-8 -t GBK " + quoted(station.native("utf8.txt")) +
             " | sed 's/$/\\r/' > " + quoted(ini()));
  }
  /// The whole of data.ini as UTF-8, its line ends (which must all be CR LF) as "\n".
  std::string content() const {
    EXPECT_EQ(outputOf("awk '!/\\r$/' " + quoted(ini())), "");
    return outputOf("iconv -f GBK -t UTF-8 " + quoted(ini()) + " | tr -d '\\r'");
  }
  std::filesystem::path ini() const { return station.native("data.ini"); }

  /// A window's life from its creation to its first close.
  ExportForm load() const {
    ExportForm form;
    form.offerAllRenameTypes();
    LoadExportSettings(form);
    return form;
  }

  TempStation station;
  RecordingWindow window;
};

TEST_F(ExportSettingsFile, AFirstStartWritesAllDefaultsAndAnUnchangedCloseTheShownPattern) {
  const ExportForm form = load();
  EXPECT_EQ(content(),
            "[Setting]\nPerName=\nSavePath=\n[Commit]\nSaveFileType=0\nIsMutiPage=false\n"
            "CompressionType=0\nCompressionRatios=0\nReNameFormat=\nReNameSp1=-\nReNameSp2=-\n"
            "LiuShuiHao=3\nIsCreateDocFolder=False\nIsCreateBatchFolder=False\n");
  EXPECT_EQ(shown(form), "0000 档案（件）名称/5 |-|-|3 00N");

  SaveExportSettings(form);
  EXPECT_EQ(content(),
            "[Setting]\nPerName=\nSavePath=\n[Commit]\nSaveFileType=0\nIsMutiPage=False\n"
            "CompressionType=0\nCompressionRatios=0\nReNameFormat=档案（件）名称\nReNameSp1=-\n"
            "ReNameSp2=-\nLiuShuiHao=3\nIsCreateDocFolder=False\nIsCreateBatchFolder=False\n");
  EXPECT_TRUE(window.boxes.empty());
}

/// A complete file with one or two lines replaced by the lines of a case.
std::string fileWith(const std::string& lines) {
  std::string text =
      "[Setting]\nPerName=王\nSavePath=\\out\\成果\\\n[Commit]\nSaveFileType=2\nIsMutiPage=False\n"
      "CompressionType=0\nCompressionRatios=1\nReNameFormat=页码\nReNameSp1=+\nReNameSp2=_\n"
      "LiuShuiHao=4\nIsCreateDocFolder=True\nIsCreateBatchFolder=False\n";
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t start = text.find(line.substr(0, line.find('=') + 1));
    text.replace(start, text.find('\n', start) - start, line);
  }
  return text;
}

TEST_F(ExportSettingsFile, WhatStandsInTheFileIsShownAndComesBack) {
  struct Case {
    std::string lines;  ///< what differs from the complete file
    std::string shown;
    std::string saved;  ///< what the close makes of these lines; empty for the same
  };
  const Case cases[] = {
      {"", "2001 页码/5 \\out\\成果\\|+|_|4 01N", ""},
      {"SaveFileType=7", ".001 页码/5 \\out\\成果\\|+|_|4 01N", ""},
      {"SaveFileType=1.5", "2001 页码/5 \\out\\成果\\|+|_|4 01N", "SaveFileType=2"},
      {"CompressionType=2", "20.1 页码/5 \\out\\成果\\|+|_|4 01N", ""},
      {"CompressionType=1", "2011 页码/5 \\out\\成果\\|+|_|4 01", ""},
      {"CompressionRatios=-3", "200. 页码/5 \\out\\成果\\|+|_|4 01N", ""},
      {"CompressionType=1\nCompressionRatios=2", "2012 页码/5 \\out\\成果\\|+|_|4 01", ""},
      {"ReNameFormat=页码 ", "2001 页码/5 \\out\\成果\\|+|_|4 01N", "ReNameFormat=页码"},
      {"ReNameFormat=随便", "2001 档案（件）名称/5 \\out\\成果\\|+|_|4 01N",
       "ReNameFormat=档案（件）名称"},
      {"IsMutiPage=TRUE\nReNameFormat=页码", "2101 档案（件）名称/2 \\out\\成果\\|+|_|4 01N",
       "IsMutiPage=True\nReNameFormat=档案（件）名称"},
      {"IsMutiPage=-1\nReNameFormat=档案名称 + 档案（件）名称",
       "2101 档案名称 + 档案（件）名称/2 \\out\\成果\\|+|_|4 01N",
       "IsMutiPage=True\nReNameFormat=档案名称 + 档案（件）名称"},
      {"ReNameSp1=  \nReNameSp2=", "2001 页码/5 \\out\\成果\\|-|-|4 01N",
       "ReNameSp1=-\nReNameSp2=-"},
      {"LiuShuiHao=三", "2001 页码/5 \\out\\成果\\|+|_|三 01N", ""},
      {"IsCreateDocFolder=0\nIsCreateBatchFolder=true", "2001 页码/5 \\out\\成果\\|+|_|4 10N",
       "IsCreateDocFolder=False\nIsCreateBatchFolder=True"},
  };
  for (const auto& [lines, expected, saved] : cases) {
    SCOPED_TRACE(lines);
    write(fileWith(lines));
    const ExportForm form = load();
    EXPECT_EQ(shown(form), expected);
    EXPECT_EQ(toUtf8(form.settings().PerName), "王");
    SaveExportSettings(form);
    EXPECT_EQ(content(), fileWith(saved.empty() ? lines : saved));
  }
  EXPECT_TRUE(window.boxes.empty());
}

TEST_F(ExportSettingsFile, ABadValueEndsTheLoadWithABoxAndLeavesTheRestUnread) {
  struct Case {
    std::string line;
    std::string shown;
  };
  const std::string unread = "/5 \\out\\成果\\|-|-|3 00N";
  const Case cases[] = {
      {"SaveFileType=x", ".... " + unread},
      {"SaveFileType=32768", ".... " + unread},
      {"IsMutiPage=abc", "2... " + unread},
      {"CompressionType=1e9", "20.. " + unread},
      {"CompressionRatios=0 0", "20.. " + unread},
      {"IsCreateDocFolder=是", "2001 页码/5 \\out\\成果\\|+|_|4 00N"},
      {"IsCreateBatchFolder=F", "2001 页码/5 \\out\\成果\\|+|_|4 01N"},
  };
  for (const auto& [line, expected] : cases) {
    SCOPED_TRACE(line);
    write(fileWith(line));
    window.boxes.clear();
    const ExportForm form = load();
    EXPECT_EQ(shown(form), expected);
    EXPECT_EQ(content(), fileWith(line));  // nothing behind it was filled in, the value is kept
    ASSERT_EQ(window.boxes.size(), 1U);
    const Box& box = window.boxes.front();
    EXPECT_THAT(toUtf8(box.text), AllOf(StartsWith("初始化导出档案参数出错! Error-"),
                                        Not(testing::EndsWith("Error-"))));
    EXPECT_EQ(box.title, L"Orvane成果导出");
    EXPECT_EQ(box.icon, BoxIcon::None);
    EXPECT_TRUE(station.logEntries().empty());
  }
}

TEST_F(ExportSettingsFile, ACloseBehindAFailedLoadWritesTheUnreadSettingsAsTheyStand) {
  write(fileWith("IsMutiPage=abc"));
  SaveExportSettings(load());
  EXPECT_EQ(content(), fileWith("IsMutiPage=False\nCompressionRatios=0\nReNameFormat=\nReNameSp1=\n"
                                "ReNameSp2=\nLiuShuiHao=3\nIsCreateDocFolder=False"));
}

TEST_F(ExportSettingsFile, TheFileLiesBesideTheProgramAndForeignLinesSurviveAClose) {
  write("; 备注\n[Other]\nx=1\n" + fileWith("SavePath=\\旧"));
  ExportForm form = load();
  form.chooseSavePath(L"\\新\\☃");  // the last one is no character of the code page
  SaveExportSettings(form);
  EXPECT_EQ(content(), "; 备注\n[Other]\nx=1\n" + fileWith("SavePath=\\新\\?\\"));
}

TEST_F(ExportSettingsFile, AFolderThatCannotBeWrittenGivesTheDefaultsAndNoWord) {
  // A folder in the place of the file: neither can it be read nor replaced, by root either.
  std::filesystem::create_directory(ini());
  const ExportForm form = load();
  EXPECT_EQ(shown(form), "0000 档案（件）名称/5 |-|-|3 00N");
  SaveExportSettings(form);
  EXPECT_TRUE(std::filesystem::is_directory(ini()));
  EXPECT_TRUE(window.boxes.empty());
}

}  // namespace
}  // namespace orvane::test
