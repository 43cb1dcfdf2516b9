#include "window/GapLabel.h"

#include <QPainter>
#include <QStyle>

namespace orvane {

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

}  // namespace orvane
