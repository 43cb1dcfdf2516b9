#include "export/OutputPreview.h"

#include <gmock/gmock.h>

#include "ExportStation.h"
#include "JournalHost.h"
#include "export/RunOutPutBatch.h"

namespace orvane::test {
namespace {

const std::string kAsPage = "例：档案 2024-0001 的第 0003 件，第 2 页存为：\n";

TEST(OutputPreview, ThePreviewIsTheOutputFileOfASamplePage) {
  ExportForm form;
  form.chooseSavePath(L"\\home\\成果");
  form.settings().ReNameSp1 = L"-";  // the default of data.ini
  form.setText(TextBox::Sp2, L"_");
  form.clickButton(OptionGroup::MutiPage, 0);
  const auto preview = [&](int pattern, const wchar_t* width) {
    form.selectRenameType(pattern);
    form.setText(TextBox::LiuShui, width);
    return toUtf8(namingPreview(form, {}));
  };
  const std::string asPage = kAsPage + "/home/成果/";
  EXPECT_EQ(preview(4, L"3"), asPage + "2024-0001-0003_002.tif\n");
  EXPECT_THAT(preview(1, L"3"),
              testing::StartsWith(asPage + "002.tif\n⚠ 会互相覆盖，都存为 001.tif：\n"));
  form.setChecked(CheckBox::CreateBatchFolder, true);
  form.setChecked(CheckBox::CreateDocFolder, true);
  EXPECT_EQ(preview(1, L"0"), asPage + "2024-0001/0003/2.tif\n");
  EXPECT_EQ(preview(1, L"99999"), "页码位数或分割符不能用，请改正。\n");
  form.setText(TextBox::LiuShui, L"3");
  form.clickButton(OptionGroup::SaveFileType, 2);
  form.clickButton(OptionGroup::MutiPage, 1);
  const std::string inOne =
      "例：档案 2024-0001 的第 0003 件，第 2 页在这个文件里：\n/home/成果/2024-0001/0003/";
  EXPECT_EQ(toUtf8(namingPreview(form, {})),
            inOne + ".pdf\n⚠ 还没有选择命名，文件名里没有档案（件）名称！\n");
  EXPECT_EQ(preview(0, L"3"), inOne + "0003.pdf\n");
}

TEST(OutputPreview, ThePreviewSaysWhatTheExportWillSay) {
  const std::wstring longSeparator(240, L'-');
  const std::string isLong = "⚠ 文件名太长（", hasSlash = "⚠ 分割符里有 /，";
  const std::string inScans = "⚠ 输出位置在扫描件文件夹（Batchs）内，不能导出！";
  const struct {
    int pattern;
    std::wstring sp1, sp2;
    std::string folder, warning, log;
  } cases[] = {
      {4, L"-", L"_", "output", "", ""},
      {2, L"/", L"_", "output", "", ""},  // the first separator is not used
      {2, L"-", L"/", "output", hasSlash, "No such file or directory"},
      {4, L"-", L"/../../", "output", hasSlash, "输出文件不在输出文件夹内"},
      {4, L"-", L"\\..\\..\\", "output", "⚠ 分割符里有 \\ 和 ..，", "输出文件不在输出文件夹内"},
      {3, L"a\\b", L"-", "output", "⚠ 分割符里有 \\，文件会落到另一个文件夹里。\n", ""},
      {2, L"-", longSeparator, "output", "", ""},  // 4 + 240 + 7 bytes
      {4, L"-", longSeparator, "output", isLong + "261 字节，最多 255 字节）",
       "File name too long"},
      {2, L"-", std::wstring(83, L'－'), "output", isLong + "260", "File name too long"},
      {2, L"-", L"-", "Batchs/x", inScans, "输出位置在扫描件文件夹内，不能导出"},
      {2, L"-", L"-", "link", inScans, "输出位置在扫描件文件夹内，不能导出"}};
  ExportStation station;
  JournalHost host;
  host.stopAfterBatch = true;
  station.addDocument("2024-0001/0003", {"P", "P"});
  station.shell("mkdir Batchs/x; ln -s Batchs/x link");
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    ExportForm form;
    form.offerAllRenameTypes();
    form.selectRenameType(c.pattern);
    form.setText(TextBox::Sp1, c.sp1);
    form.setText(TextBox::Sp2, c.sp2);
    form.settings().ReNameSp1 = c.sp1;
    form.settings().ReNameSp2 = c.sp2;
    form.chooseSavePath(pathText(station.native(c.folder)));
    form.setChecked(CheckBox::CreateBatchFolder, true);
    host.options = form.settings();
    const OutputDisk disk = examineOutputDisk(host.options.SavePath);
    const std::string preview = toUtf8(namingPreview(form, disk));
    EXPECT_THAT(preview, testing::HasSubstr("\n" + c.warning));
    EXPECT_EQ(preview.find("不能导出") != preview.npos, !c.log.empty()) << preview;
    EXPECT_EQ(exampleName(form, form.renameTypeText(), disk).ends_with(L" ⚠"), !c.warning.empty());

    station.createTable({"2024-0001"});
    RunOutPutBatch(host);
    EXPECT_EQ(station.stateOf("2024-0001"),
              c.log.empty() ? "完成成果输出|" : "完成扫描|成果输出失败！");
    EXPECT_THAT(station.takeLog(), testing::HasSubstr(c.log));
    const std::string file = station.shell("find \"$PWD/output\" -name '*2.tif'");
    EXPECT_TRUE(file.empty() || preview.starts_with(kAsPage + file)) << preview;
    station.shell("rm -rf output/*");
  }
}

}  // namespace
}  // namespace orvane::test
