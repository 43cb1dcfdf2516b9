#include "window/WrapButton.h"

#include <QStyleOptionButton>
#include <QStylePainter>
#include <algorithm>

namespace orvane {
namespace {

constexpr int kWrapFlags = Qt::AlignCenter | Qt::TextWordWrap;

}  // namespace

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
