#include "window/help.h"

#include <QAbstractButton>
#include <QDesktopServices>
#include <QFileInfo>
#include <QPushButton>
#include <QShortcut>
#include <QUrl>

#include "foundation/WindowServices.h"
#include "foundation/program.h"
#include "window/controls.h"
#include "window/qt_path.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

struct HelpRow {
  ControlName<QWidget> name;
  Qt::Key key;  ///< with Alt
  const char* accessibleName;
  const char* toolTip;
};

// clang-format off
constexpr HelpRow kHelp[] = {
    {"listProcessLog", Qt::Key_L, "导出进度",
     "导出的进度，最新的一行在最下面。\n往上翻看时不会被拉回来，翻到最下面又会跟着新的行走。\n"
     "停在一行上，或选中它按回车，就显示失败的原因或要注意的事；没有的，显示做到哪里了。\n"
     "Ctrl+P 导出进度，Ctrl+A 全选，Ctrl+C 复制选中的行，Ctrl+L 日志，Ctrl+T 导出清单，\n"
     "Ctrl+O 打开输出文件夹，F1 操作手册。"},

    {"txtSavePath", Qt::Key_U, "成果输出文件夹",
     "成果文件都写到这个文件夹里。\n这里只显示，请用“选择目录”更改。"},
    {"cmdSelectPath", Qt::Key_O, "选择成果输出文件夹",
     "选择成果输出文件夹。\n不能选扫描件所在的 Batchs 文件夹；选择时按取消，等于没有选文件夹。"},

    {"optSaveFileType_0", Qt::Key_T, "保存格式：TIF",
     "成果存为 .tif 文件。\n黑白页用 Group 4 压缩，灰度和彩色页用 JPEG 压缩；不压缩时用 LZW，像素不变。\n"
     "点击后要重新选择档案命名。"},
    {"optSaveFileType_1", Qt::Key_J, "保存格式：JPG",
     "成果存为 .jpg 文件。\n灰度和彩色页是 JPEG；黑白页和不压缩的页，内容其实是 TIFF；"
     "多页文件的内容其实是 PDF。\n点击后要重新选择档案命名。"},
    {"optSaveFileType_2", Qt::Key_P, "保存格式：PDF",
     "成果存为 .pdf 文件（PDF/A-1b），页面大小与原件相同。\n"
     "黑白页用 Group 4 压缩，灰度和彩色页用 JPEG 压缩。\n点击后要重新选择档案命名。"},

    {"optMutiPage_0", Qt::Key_Y, "每页保存为一个文件",
     "每一页存为一个文件，文件名末尾是页码：0001-001.tif、0001-002.tif……\n点击后要重新选择档案命名。"},
    {"optMutiPage_1", Qt::Key_D, "保存为一个多页文件",
     "每个档案（件）存为一个文件，里面按顺序是它的所有页：0001.pdf。\n点击后要重新选择档案命名。"},

    {"optCompressionType_0", Qt::Key_Z, "压缩",
     "压缩成果文件：黑白页用 Group 4（不损失），灰度和彩色页用 JPEG（按右边的比率）。"},
    {"optCompressionType_1", Qt::Key_B, "不压缩",
     "像素一个不变：TIF 和按页的 JPG 用 LZW，PDF 和多页 JPG 不压缩。文件大得多。\n"
     "选中后，档案命名暂时不能改。"},
    {"optCompressionRatios_0", Qt::Key_1, "彩色图片压缩比率：一般",
     "灰度和彩色页的 JPEG 质量 80：清晰，文件较大。黑白页不受影响。"},
    {"optCompressionRatios_1", Qt::Key_2, "彩色图片压缩比率：中",
     "灰度和彩色页的 JPEG 质量 60。黑白页不受影响。"},
    {"optCompressionRatios_2", Qt::Key_3, "彩色图片压缩比率：高",
     "灰度和彩色页的 JPEG 质量 40：文件最小，细节有损失。黑白页不受影响。"},

    {"cboRenameType", Qt::Key_M, "档案命名", ""},  // NamingPreview adds the text
    {"txtSp1", Qt::Key_F, "档案名称后面的分割符",
     "文件名里档案名称和档案（件）名称之间的文字，不能有 / 和 \\。\n"
     "可以为空，但空的或只有空格的，下次打开程序时又是“-”。\n只用于以“档案名称”开头的命名。"},
    {"txtSp2", Qt::Key_G, "页码前面的分割符",
     "文件名里档案（件）名称和页码之间的文字，不能有 / 和 \\。\n"
     "可以为空，但空的或只有空格的，下次打开程序时又是“-”。\n只用于以“+ 页码”结尾的命名。"},
    {"txtLiuShui", Qt::Key_W, "页码位数",
     "页码至少有几位，不足的在前面补 0：3 位时第 2 页是 002。\n0 表示不补。启动时读取。"},

    {"chkCreateBatchFolder", Qt::Key_C, "第一层文件夹：档案名称",
     "每个档案的成果放在自己的文件夹里：输出文件夹\\档案名称\\……\n"
     "档案导出失败时，这个文件夹会整个删除，不留半套成果；不勾选时，已写出的文件会留下。"},
    {"chkCreateDocFolder", Qt::Key_E, "第二层文件夹：档案（件）名",
     "每个档案（件）的成果放在自己的文件夹里：……\\档案（件）名\\……\n按“页码”命名时应当勾选，"
     "否则各件的同号页会互相覆盖。"},

    {"btnRun", Qt::Key_Q, "启动",
     "从最早的一批开始，导出所有“完成扫描”的档案。\n同名的旧成果会被替换；扫描件只读，不会改动。"},
    {"btnStop", Qt::Key_S, "停止", "正在导出的这一批做完后停下来。"},
    {"btnExit", Qt::Key_X, "退出", "保存各项设置并关闭程序。导出时请先停止。"},
};
// clang-format on

QString keyName(Qt::Key key) {
  return QKeySequence(Qt::ALT | key).toString(QKeySequence::PortableText);
}

// The shortcut belongs to the window. A shortcut of a disabled control is inactive, and its key
// would be typed into the text box that has the focus.
void addKey(QWidget& window, QWidget& target, Qt::Key key) {
  auto* shortcut = new QShortcut(Qt::ALT | key, &window);
  QObject::connect(shortcut, &QShortcut::activated, &target, [&target] {
    if (!target.isEnabled()) return;
    target.setFocus(Qt::ShortcutFocusReason);
    if (auto* button = qobject_cast<QAbstractButton*>(&target)) button->click();
  });
}

}  // namespace

void addControlHelp(QWidget& window) {
  for (const HelpRow& row : kHelp) {
    QWidget& target = control(window, row.name);
    const QString text = QString::fromUtf8(row.toolTip);
    const QString keyLine = QStringLiteral("快捷键 %1").arg(keyName(row.key));
    target.setToolTip(text.isEmpty() ? keyLine : text + u'\n' + keyLine);
    QWidget* const named = target.focusProxy() != nullptr ? target.focusProxy() : &target;
    named->setAccessibleName(QString::fromUtf8(row.accessibleName));
    addKey(window, target, row.key);
    // Enter presses the button that has the focus, like the space bar.
    if (auto* button = qobject_cast<QPushButton*>(&target)) button->setAutoDefault(true);
  }
}

// The guide.

namespace {

constexpr const wchar_t* kGuide = L"operator-guide.zh.html";

}  // namespace

QString guideFile() {
  for (const std::wstring& folder :
       {programFolder() + L"\\doc\\", std::wstring(L"\\usr\\share\\doc\\orvane-export\\")}) {
    QString file = toQtPath(folder + kGuide);
    if (QFileInfo(file).isReadable()) return file;
  }
  return {};
}

void openGuide() {
  const QString file = guideFile();
  if (file.isEmpty()) {
    windowServices().showBox(L"找不到操作手册：" + programFolder() + L"\\doc\\" + kGuide,
                             kApplicationTitle, BoxIcon::Critical);
  } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file))) {
    windowServices().showBox(L"没有能打开操作手册的浏览器。操作手册在：\r" + fromQt(file),
                             kApplicationTitle, BoxIcon::Critical);
  }
}

}  // namespace orvane
