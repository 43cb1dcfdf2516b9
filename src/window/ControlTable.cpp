#include "window/ControlTable.h"

namespace orvane {
namespace {

using enum ControlKind;

// clang-format off
constexpr ControlRow kControls[] = {
    {"listProcessLog", "", List, L"", kListLeft, 135, 7815, 9390, 0},

    {"Frame6", "", Frame, L"成果输出文件夹", 120, 120, 5895, 1095, 37},
    {"txtSavePath", "Frame6", TallText, L"", 120, 240, 4935, 735, 38},
    {"cmdSelectPath", "Frame6", WrapButton, L"选择目录", 5160, 240, 615, 735, 39},

    {"Frame1", "", Frame, L"保存格式", 120, 1320, 5895, 855, 1},
    {"optSaveFileType_0", "Frame1", Option, L"TIF", 240, 360, 855, 255, 4},
    {"optSaveFileType_1", "Frame1", Option, L"JPG", 2340, 360, 855, 255, 3},
    {"optSaveFileType_2", "Frame1", Option, L"PDF", 4440, 360, 855, 255, 2},

    {"Frame2", "", Frame, L"存储形式", 120, 2280, 5895, 975, 5},
    {"optMutiPage_0", "Frame2", Option, L"每页保存为一个文件", 240, 480, 2295, 255, 6},
    {"optMutiPage_1", "Frame2", Option, L"保存为一个多页文件", 3120, 480, 2415, 255, 7},

    {"Frame3", "", Frame, L"压缩比率", 120, 3360, 5895, 1335, 8},
    {"optCompressionType_0", "Frame3", Option, L"压缩(系统默认)", 240, 360, 1695, 255, 10},
    {"optCompressionType_1", "Frame3", Option, L"不压缩( 彩色TIF压缩格式为LZW )", 240, 975, 4335, 255, 9},
    {"Frame31", "Frame3", Frame, L"彩色图片压缩比率", 2040, 240, 3615, 615, 11},
    {"optCompressionRatios_0", "Frame31", Option, L"一般", 240, 240, 735, 255, 14},
    {"optCompressionRatios_1", "Frame31", Option, L"中", 1320, 240, 735, 255, 13},
    {"optCompressionRatios_2", "Frame31", Option, L"高", 2280, 240, 735, 255, 12},

    {"Frame4", "", Frame, L"档案命名", 120, 4800, 5895, 1575, 15},
    {"cboRenameType", "Frame4", DropDown, L"", 240, 360, 5535, 315, 22},
    {"Frame41", "Frame4", Frame, L"分割符", 240, 720, 5535, 735, 16},
    {"lblBatch", "Frame41", Label, L"档案包名称", 240, 360, 900, 180, 19},
    {"txtSp1", "Frame41", Text, L"-", 1200, 315, 615, 285, 17},
    {"lblDoc", "Frame41", Label, L"档案（件）名称", 1920, 360, 1260, 195, 20},
    {"txtSp2", "Frame41", Text, L"-", 3240, 315, 615, 270, 18},
    {"lblPage", "Frame41", GapLabel, L"页码（         位数）", 3960, 360, 1485, 195, 21},
    {"txtLiuShui", "Frame41", Text, L"3", 4440, 315, 375, 285, 23},

    {"Frame5", "", Frame, L"文件夹结构", 120, 6480, 5895, 2175, 24},
    {"chkCreateBatchFolder", "Frame5", Check, L"\\第一层（档案名称）", 240, 480, 3495, 255, 25},
    {"chkCreateDocFolder", "Frame5", Check, L"......\\第二层（档案（件）名）", 240, 960, 3495, 255, 26},
    {"Label1", "Frame5", Label, L"(以JPG格式导出一个多页文档时，谨慎使用该选项！)", 480, 1320, 5055, 255, 27},

    {"btnRun", "", Button, L"启动", 240, 8760, 1455, 735, 40},
    {"btnStop", "", Button, L"停止", 2040, 8760, 1455, 735, 41},
    {"btnExit", "", Button, L"退出", 3840, 8760, 1455, 735, 42},

    // Below the client area and never shown.
    {"Frame7", "", Frame, L"临时处理的Imaging控件", 120, 9900, 5895, 1095, 43},
};
// clang-format on

}  // namespace

std::span<const ControlRow> controlTable() {
  return kControls;
}

}  // namespace orvane
