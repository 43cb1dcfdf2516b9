#include "window/NamingPreview.h"

#include <QAccessible>
#include <QPainter>
#include <QStyledItemDelegate>

#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr int kExample = Qt::UserRole;  // the example name of an entry

/// Draws the example name of an entry, right-aligned.
class ExampleDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const int used = option.fontMetrics.horizontalAdvance(index.data().toString());
    const QRect free = option.rect.adjusted(used + 24, 0, -8, 0);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->setFont(option.font);
    painter->setPen(
        option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::PlaceholderText));
    painter->drawText(free, Qt::AlignRight | Qt::AlignVCenter,
                      option.fontMetrics.elidedText(index.data(kExample).toString(),
                                                    Qt::ElideMiddle, free.width()));
  }
};

}  // namespace

NamingPreview::NamingPreview(QComboBox& cboRenameType, QWidget& btnRun, const ExportForm& form)
    : cboRenameType_(cboRenameType),
      form_(form),
      tips_{Tip{&cboRenameType, cboRenameType.toolTip()}, Tip{&btnRun, btnRun.toolTip()}} {
  cboRenameType.setItemDelegate(new ExampleDelegate(&cboRenameType));
  for (const Tip& tip : tips_) tip.control->installEventFilter(this);
}

bool NamingPreview::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Enter || event->type() == QEvent::FocusIn) examineDisk();
  return QObject::eventFilter(watched, event);
}

void NamingPreview::examineDisk() {
  examined_ = form_.settings().SavePath;
  disk_ = examineOutputDisk(examined_);
  update();
}

void NamingPreview::update() {
  if (examined_ != form_.settings().SavePath) disk_ = {};
  for (const auto& [control, constant] : tips_) {
    const QString text = toQt(namingPreview(form_, disk_)) + constant;
    if (text == control->toolTip()) continue;
    control->setToolTip(text);
    QAccessibleEvent told(control, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&told);
  }
  for (int entry = 0; entry < cboRenameType_.count(); ++entry) {
    const QString pattern = cboRenameType_.itemText(entry);
    const QString example = toQt(exampleName(form_, fromQt(pattern), disk_));
    cboRenameType_.setItemData(entry, example, kExample);
    cboRenameType_.setItemData(entry, pattern + u'：' + example, Qt::AccessibleTextRole);
  }
}

}  // namespace orvane
