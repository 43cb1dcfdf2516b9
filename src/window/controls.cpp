#include "window/controls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QWheelEvent>
#include <algorithm>
#include <iterator>
#include <vector>

#include "window/ProgressListView.h"
#include "window/appearance.h"
#include "window/qt_text.h"

namespace orvane {

std::span<const ControlRow> controlTable() {
  using enum ControlKind;
  // clang-format off
  static constexpr ControlRow kControls[] = {
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
  return kControls;
}

// Construction.

namespace {

QWidget* makeLabel(QLabel* label) {
  label->setTextFormat(Qt::PlainText);
  return label;
}

QWidget* makeTallText(const QString& text, QWidget* parent) {
  auto* box = new QPlainTextEdit(text, parent);
  box->setTabChangesFocus(true);
  box->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // The box only displays the folder; typing or dropping text must not change it.
  box->setReadOnly(true);
  box->setAcceptDrops(false);
  QPalette palette = box->palette();
  palette.setColor(QPalette::Base, palette.color(QPalette::Window));
  box->setPalette(palette);
  return box;
}

/// A drop-down list that the wheel changes only while it has the focus, not because the pointer
/// happens to be over it.
class DropDownList : public QComboBox {
 public:
  explicit DropDownList(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);  // by default the wheel gives the focus
  }

 protected:
  void wheelEvent(QWheelEvent* event) override {
    if (!hasFocus()) return event->ignore();
    QComboBox::wheelEvent(event);
  }
};

// The widget belongs to its parent.
QWidget* makeControl(ControlKind kind, const QString& caption, QWidget* parent) {
  switch (kind) {
    case ControlKind::List:
      return new ProgressListBox(parent);
    case ControlKind::Frame:
      return new OptionFrame(caption, parent);
    case ControlKind::Option:
      return new QRadioButton(caption, parent);
    case ControlKind::Check:
      return new QCheckBox(caption, parent);
    case ControlKind::Label:
      return makeLabel(new QLabel(caption, parent));
    case ControlKind::GapLabel:
      return makeLabel(new GapLabel(caption, parent));
    case ControlKind::Text:
      return new QLineEdit(caption, parent);
    case ControlKind::TallText:
      return makeTallText(caption, parent);
    case ControlKind::DropDown:
      return new DropDownList(parent);
    case ControlKind::Button:
      return new QPushButton(caption, parent);
    case ControlKind::WrapButton:
      return new WrapButton(caption, parent);
  }
  return nullptr;
}

void decorate(QWidget& window) {
  QLabel& warning = control<QLabel>(window, "Label1");
  QPalette palette = warning.palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    palette.setColor(group, QPalette::WindowText, QColor(192, 0, 0));
  }
  warning.setPalette(palette);

  const auto setIcon = [&](const char* name, const QIcon& icon) {
    QPushButton& button = control<QPushButton>(window, name);
    button.setIcon(icon);
    button.setIconSize({24, 24});
  };
  setIcon("btnRun", runIcon());
  setIcon("btnStop", stopIcon());
  setIcon("btnExit", exitIcon());

  auto& label = control<GapLabel>(window, "lblPage");
  label.setGapEnd(control<QWidget>(window, "txtLiuShui").geometry().right() + 3 - label.x());

  control<QWidget>(window, "Frame7").hide();
}

// Frames and labels have positions in the tab order too, but cannot have the focus.
void setTabOrder(QWidget& window) {
  std::vector<ControlRow> rows;
  std::ranges::copy_if(controlTable(), std::back_inserter(rows), takesFocus, &ControlRow::kind);
  std::ranges::sort(rows, {}, &ControlRow::tab);
  QWidget* before = nullptr;
  for (const ControlRow& row : rows) {
    QWidget& next = control<QWidget>(window, row.name);
    if (before != nullptr) QWidget::setTabOrder(before, &next);
    before = &next;
  }
}

}  // namespace

void buildControls(QWidget& window) {
  for (const ControlRow& row : controlTable()) {
    const bool isOutermost = *row.parent == '\0';
    QWidget* parent = isOutermost ? &window : &control<QWidget>(window, row.parent);
    QWidget* widget = makeControl(row.kind, toQt(row.caption), parent);
    widget->setObjectName(QString::fromLatin1(row.name));
    widget->setGeometry(row.left / kTwipsPerPixel, row.top / kTwipsPerPixel,
                        row.width / kTwipsPerPixel, row.height / kTwipsPerPixel);
  }
  decorate(window);
  setTabOrder(window);
}

// Widgets with special captions.

namespace {

constexpr int kFrameCaptionLeft = 8;
constexpr int kFrameCaptionPadding = 3;
constexpr double kCornerRadius = 3;
constexpr int kWrapFlags = Qt::AlignCenter | Qt::TextWordWrap;

}  // namespace

void GapLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const auto draw = [&](const QString& part, int left) {
    style()->drawItemText(&painter, rect().adjusted(left, 0, 0, 0), int(alignment()), palette(),
                          isEnabled(), part, foregroundRole());
  };
  const QString caption = text();
  draw(caption.left(caption.indexOf(u' ')), 0);
  draw(caption.mid(caption.lastIndexOf(u' ') + 1), gapEnd_);
}

QRect OptionFrame::captionRect() const {
  const int width = fontMetrics().horizontalAdvance(title()) + 2 * kFrameCaptionPadding;
  return QRect(kFrameCaptionLeft, 0, width, fontMetrics().height());
}

void OptionFrame::paintEvent(QPaintEvent*) {
  const QRect caption = captionRect();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(palette().color(QPalette::Mid));
  painter.setClipRegion(QRegion(rect()) - caption);
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, caption.center().y() + 0.5, -0.5, -0.5),
                          kCornerRadius, kCornerRadius);
  painter.setClipping(false);
  style()->drawItemText(&painter, caption, Qt::AlignCenter, palette(), isEnabled(), title(),
                        QPalette::WindowText);
}

QRect WrapButton::contentsArea() const {
  QStyleOptionButton option;
  initStyleOption(&option);
  return style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
}

QRect WrapButton::captionRect() const {
  const QRect area = contentsArea();
  const int whole = fontMetrics().horizontalAdvance(text());
  const int lines = (whole + area.width() - 1) / std::max(1, area.width());
  const int lineWidth = whole / std::max(1, lines) + 1;
  QRect column(0, 0, lineWidth, area.height());
  column.moveCenter(area.center());
  return fontMetrics().boundingRect(column, kWrapFlags, text());
}

void WrapButton::paintEvent(QPaintEvent*) {
  QStyleOptionButton option;
  initStyleOption(&option);
  option.text.clear();
  QStylePainter painter(this);
  painter.drawControl(QStyle::CE_PushButton, option);
  painter.drawItemText(captionRect(), kWrapFlags, palette(), isEnabled(), text(),
                       QPalette::ButtonText);
}

}  // namespace orvane
