#include "window/build_controls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>
#include <iterator>
#include <vector>

#include "window/ControlTable.h"
#include "window/ProgressListView.h"
#include "window/caption_widgets.h"
#include "window/icons.h"
#include "window/qt_text.h"

namespace orvane {
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
      return new QComboBox(parent);
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

}  // namespace orvane
