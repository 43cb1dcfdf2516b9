#include "window/OptionFrame.h"

#include <QPainter>
#include <QStyle>

namespace orvane {
namespace {

constexpr int kCaptionLeft = 8;
constexpr int kCaptionPadding = 3;
constexpr double kCornerRadius = 3;

}  // namespace

QRect OptionFrame::captionRect() const {
  const int width = fontMetrics().horizontalAdvance(title()) + 2 * kCaptionPadding;
  return QRect(kCaptionLeft, 0, width, fontMetrics().height());
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

}  // namespace orvane
