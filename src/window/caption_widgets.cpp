#include "window/caption_widgets.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <algorithm>

namespace orvane {
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
