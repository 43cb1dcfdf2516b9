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
#include <string>
#include <vector>

#include "foundation/Failure.h"
#include "window/ProgressListView.h"
#include "window/appearance.h"
#include "window/qt_text.h"

namespace orvane {

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

  const auto setIcon = [&](ControlName<QPushButton> name, const QIcon& icon) {
    QPushButton& button = control(window, name);
    button.setIcon(icon);
    button.setIconSize({24, 24});
  };
  setIcon("btnRun", runIcon());
  setIcon("btnStop", stopIcon());
  setIcon("btnExit", exitIcon());

  GapLabel& label = control<GapLabel>(window, "lblPage");
  label.setGapEnd(control<QWidget>(window, "txtLiuShui").geometry().right() + 3 - label.x());

  control<QWidget>(window, "Frame7").hide();
}

// Frames and labels have positions in the tab order too, but cannot have the focus.
void setTabOrder(QWidget& window) {
  std::vector<ControlRow> rows;
  std::ranges::copy_if(kControls, std::back_inserter(rows), takesFocus, &ControlRow::kind);
  std::ranges::sort(rows, {}, &ControlRow::tab);
  QWidget* before = nullptr;
  for (const ControlRow& row : rows) {
    QWidget& next = widgetNamed(window, row.name);
    if (before != nullptr) QWidget::setTabOrder(before, &next);
    before = &next;
  }
}

}  // namespace

QWidget& widgetNamed(const QWidget& window, const char* name) {
  auto* const found = window.findChild<QWidget*>(QString::fromLatin1(name));
  if (found == nullptr) throw Failure(std::string("the window has no control ") + name);
  return *found;
}

void buildControls(QWidget& window) {
  for (const ControlRow& row : kControls) {
    const bool isOutermost = *row.parent == '\0';
    QWidget* parent = isOutermost ? &window : &widgetNamed(window, row.parent);
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
