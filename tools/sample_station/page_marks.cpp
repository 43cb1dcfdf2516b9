#include "page_marks.h"

#include <QPainterPath>
#include <QPolygonF>
#include <cmath>
#include <numbers>

namespace orvane::sample {

using namespace Qt::StringLiterals;

namespace {

constexpr double kSealRadius = 56;
const QColor kSealRed(206, 38, 46);

QPolygonF star(double radius) {
  QPolygonF points;
  for (int i = 0; i < 10; ++i) {
    const double angle = i * std::numbers::pi / 5;
    const double reach = i % 2 == 0 ? radius : radius * 0.382;
    points << QPointF(std::sin(angle) * reach, -std::cos(angle) * reach);
  }
  return points;
}

void drawRimText(QPainter& painter, const QString& text) {
  QFont font = painter.font();
  font.setPixelSize(15);
  painter.setFont(font);
  const double step = 25;
  const double first = -step * static_cast<double>(text.size() - 1) / 2;
  for (int i = 0; i < text.size(); ++i) {
    painter.save();
    painter.rotate(first + i * step);
    painter.drawText(QRectF(-10, -kSealRadius + 5, 20, 20), Qt::AlignCenter, text.mid(i, 1));
    painter.restore();
  }
}

}  // namespace

void drawSeal(QPainter& painter, QPointF centre, Noise& noise) {
  painter.save();
  painter.translate(centre);
  painter.rotate(noise.between(-9, 9));
  painter.setOpacity(0.82);
  painter.setPen(QPen(kSealRed, 3.2));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QPointF(0, 0), kSealRadius, kSealRadius);
  painter.setBrush(kSealRed);
  painter.setPen(Qt::NoPen);
  painter.drawPolygon(star(17));
  painter.setPen(kSealRed);
  drawRimText(painter, u"云岭县档案管理专用章"_s);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(250, 248, 242));
  painter.setOpacity(0.7);
  for (int i = 0; i < 260; ++i) {  // spots without ink
    const double angle = noise.between(0, 2 * std::numbers::pi);
    const double reach = kSealRadius * std::sqrt(noise.between(0, 1.05));
    const double size = noise.between(0.2, 0.9);
    painter.drawEllipse(QPointF(std::cos(angle) * reach, std::sin(angle) * reach), size, size);
  }
  painter.restore();
}

void drawSignature(QPainter& painter, QPointF start, Noise& noise) {
  painter.save();
  painter.setBrush(Qt::NoBrush);
  QPointF at = start;
  for (int stroke = 0; stroke < 6; ++stroke) {
    QPainterPath path(at);
    for (int turn = 0; turn < 3; ++turn) {
      const QPointF end = at + QPointF(noise.between(3, 15), noise.between(-11, 11));
      path.cubicTo(at + QPointF(noise.between(-4, 12), noise.between(-18, 18)),
                   end + QPointF(noise.between(-12, 4), noise.between(-16, 16)), end);
      at = end;
    }
    const double width = noise.between(0.8, 1.7);
    painter.setPen(QPen(QColor(34, 46, 120), width, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(path);
    at = QPointF(at.x() - noise.between(4, 14), start.y() + noise.between(-7, 7));
  }
  painter.restore();
}

void drawPunchHoles(QPainter& painter, QSizeF page) {
  painter.save();
  painter.setPen(QPen(QColor(150, 148, 144), 0.6));
  painter.setBrush(QColor(64, 62, 60));
  for (const double offset : {-113.4, 113.4}) {  // 80 mm apart
    painter.drawEllipse(QPointF(34, page.height() / 2 + offset), 8.5, 8.5);
  }
  painter.restore();
}

void drawFold(QPainter& painter, QSizeF page, double y) {
  painter.save();
  painter.setPen(QPen(QColor(214, 211, 203), 1.2));
  painter.drawLine(QPointF(-20, y), QPointF(page.width() + 20, y + 1.5));
  painter.setPen(QPen(QColor(254, 253, 250), 0.8));
  painter.drawLine(QPointF(-20, y + 1.2), QPointF(page.width() + 20, y + 2.7));
  painter.restore();
}

}  // namespace orvane::sample
