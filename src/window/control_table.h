#pragma once

#include <QSize>
#include <string_view>
#include <type_traits>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QWidget;

/// The controls of `frmMain`: their kinds, captions and positions in a table, and their names.
namespace orvane {

class GapLabel;
class ProgressListBox;

enum class ControlKind {
  List,
  Frame,
  Option,
  Check,
  Label,
  GapLabel,  ///< another control is placed in the blanks of its caption
  Text,
  TallText,  ///< wraps long text
  DropDown,
  Button,
  WrapButton,  ///< wraps its caption
};

constexpr bool takesFocus(ControlKind kind) {
  return kind != ControlKind::Frame && kind != ControlKind::Label && kind != ControlKind::GapLabel;
}

/// One control. Positions and sizes are in twips, relative to the upper left corner of the parent.
struct ControlRow {
  const char* name;    ///< the object name; for a button of a group it ends in `_<index>`
  const char* parent;  ///< the name of the parent control; empty for the window itself
  ControlKind kind;
  const wchar_t* caption;
  int left, top, width, height;
  int tab;  ///< the position in the tab order
};

/// A twip is 1/1440 inch, so that a pixel at 96 dpi has 15.
inline constexpr int kTwipsPerPixel = 15;

/// The client area of the window, in pixels.
inline constexpr QSize kClientSize(13995 / kTwipsPerPixel, 9675 / kTwipsPerPixel);

/// The left edge of the progress list, in twips.
inline constexpr int kListLeft = 6120;

/// All controls. A control comes after its parent and after any control that it covers.
// clang-format off
inline constexpr ControlRow kControls[] = {
    {"listProcessLog", "", ControlKind::List, L"", kListLeft, 135, 7815, 9390, 0},

    {"Frame6", "", ControlKind::Frame, L"成果输出文件夹", 120, 120, 5895, 1095, 37},
    {"txtSavePath", "Frame6", ControlKind::TallText, L"", 120, 240, 4935, 735, 38},
    {"cmdSelectPath", "Frame6", ControlKind::WrapButton, L"选择目录", 5160, 240, 615, 735, 39},

    {"Frame1", "", ControlKind::Frame, L"保存格式", 120, 1320, 5895, 855, 1},
    {"optSaveFileType_0", "Frame1", ControlKind::Option, L"TIF", 240, 360, 855, 255, 4},
    {"optSaveFileType_1", "Frame1", ControlKind::Option, L"JPG", 2340, 360, 855, 255, 3},
    {"optSaveFileType_2", "Frame1", ControlKind::Option, L"PDF", 4440, 360, 855, 255, 2},

    {"Frame2", "", ControlKind::Frame, L"存储形式", 120, 2280, 5895, 975, 5},
    {"optMutiPage_0", "Frame2", ControlKind::Option, L"每页保存为一个文件", 240, 480, 2295, 255, 6},
    {"optMutiPage_1", "Frame2", ControlKind::Option, L"保存为一个多页文件", 3120, 480, 2415, 255, 7},

    {"Frame3", "", ControlKind::Frame, L"压缩比率", 120, 3360, 5895, 1335, 8},
    {"optCompressionType_0", "Frame3", ControlKind::Option, L"压缩(系统默认)", 240, 360, 1695, 255, 10},
    {"optCompressionType_1", "Frame3", ControlKind::Option, L"不压缩( 彩色TIF压缩格式为LZW )", 240, 975, 4335, 255, 9},
    {"Frame31", "Frame3", ControlKind::Frame, L"彩色图片压缩比率", 2040, 240, 3615, 615, 11},
    {"optCompressionRatios_0", "Frame31", ControlKind::Option, L"一般", 240, 240, 735, 255, 14},
    {"optCompressionRatios_1", "Frame31", ControlKind::Option, L"中", 1320, 240, 735, 255, 13},
    {"optCompressionRatios_2", "Frame31", ControlKind::Option, L"高", 2280, 240, 735, 255, 12},

    {"Frame4", "", ControlKind::Frame, L"档案命名", 120, 4800, 5895, 1575, 15},
    {"cboRenameType", "Frame4", ControlKind::DropDown, L"", 240, 360, 5535, 315, 22},
    {"Frame41", "Frame4", ControlKind::Frame, L"分割符", 240, 720, 5535, 735, 16},
    {"lblBatch", "Frame41", ControlKind::Label, L"档案包名称", 240, 360, 900, 180, 19},
    {"txtSp1", "Frame41", ControlKind::Text, L"-", 1200, 315, 615, 285, 17},
    {"lblDoc", "Frame41", ControlKind::Label, L"档案（件）名称", 1920, 360, 1260, 195, 20},
    {"txtSp2", "Frame41", ControlKind::Text, L"-", 3240, 315, 615, 270, 18},
    {"lblPage", "Frame41", ControlKind::GapLabel, L"页码（         位数）", 3960, 360, 1485, 195, 21},
    {"txtLiuShui", "Frame41", ControlKind::Text, L"3", 4440, 315, 375, 285, 23},

    {"Frame5", "", ControlKind::Frame, L"文件夹结构", 120, 6480, 5895, 2175, 24},
    {"chkCreateBatchFolder", "Frame5", ControlKind::Check, L"\\第一层（档案名称）", 240, 480, 3495, 255, 25},
    {"chkCreateDocFolder", "Frame5", ControlKind::Check, L"......\\第二层（档案（件）名）", 240, 960, 3495, 255, 26},
    {"Label1", "Frame5", ControlKind::Label, L"(以JPG格式导出一个多页文档时，谨慎使用该选项！)", 480, 1320, 5055, 255, 27},

    {"btnRun", "", ControlKind::Button, L"启动", 240, 8760, 1455, 735, 40},
    {"btnStop", "", ControlKind::Button, L"停止", 2040, 8760, 1455, 735, 41},
    {"btnExit", "", ControlKind::Button, L"退出", 3840, 8760, 1455, 735, 42},

    // Below the client area and never shown.
    {"Frame7", "", ControlKind::Frame, L"临时处理的Imaging控件", 120, 9900, 5895, 1095, 43},
};
// clang-format on

/// True if a control of this kind is made as a `Control`.
template <typename Control>
constexpr bool isMadeAs(ControlKind kind) {
  const auto isOneOf = [kind](auto... kinds) { return ((kind == kinds) || ...); };
  if constexpr (std::is_same_v<Control, QWidget>) {
    return true;
  } else if constexpr (std::is_same_v<Control, ProgressListBox>) {
    return isOneOf(ControlKind::List);
  } else if constexpr (std::is_same_v<Control, QRadioButton>) {
    return isOneOf(ControlKind::Option);
  } else if constexpr (std::is_same_v<Control, QCheckBox>) {
    return isOneOf(ControlKind::Check);
  } else if constexpr (std::is_same_v<Control, QLabel>) {
    return isOneOf(ControlKind::Label, ControlKind::GapLabel);
  } else if constexpr (std::is_same_v<Control, GapLabel>) {
    return isOneOf(ControlKind::GapLabel);
  } else if constexpr (std::is_same_v<Control, QLineEdit>) {
    return isOneOf(ControlKind::Text);
  } else if constexpr (std::is_same_v<Control, QPlainTextEdit>) {
    return isOneOf(ControlKind::TallText);
  } else if constexpr (std::is_same_v<Control, QComboBox>) {
    return isOneOf(ControlKind::DropDown);
  } else if constexpr (std::is_same_v<Control, QPushButton>) {
    return isOneOf(ControlKind::Button, ControlKind::WrapButton);
  } else {
    return false;
  }
}

/// The name of a `Control`. The compiler refuses a name that the table does not have, or has for
/// another kind of control.
template <typename Control>
class ControlName {
 public:
  consteval ControlName(const char* name) : name_(name) {
    for (const ControlRow& row : kControls) {
      if (row.name == std::string_view(name) && isMadeAs<Control>(row.kind)) return;
    }
    throw "the window has no such control";
  }

  constexpr const char* text() const { return name_; }

 private:
  const char* name_;
};

}  // namespace orvane
