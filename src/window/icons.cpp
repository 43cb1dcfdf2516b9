#include "window/icons.h"

#include <QPainter>
#include <QPixmap>
#include <functional>

namespace orvane {
namespace {

constexpr int kGrid = 32;  // width and height of the drawing coordinates

const QColor kGreen(46, 139, 87);
const QColor kRed(192, 57, 43);
const QColor kBlue(52, 101, 164);

using Draw = std::function<void(QPainter&)>;

QPixmap pixmap(int size, QPainter::CompositionMode mode, const Draw& draw) {
  QPixmap picture(size, size);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(double(size) / kGrid, double(size) / kGrid);
  painter.setPen(Qt::NoPen);
  draw(painter);
  if (mode == QPainter::CompositionMode_SourceIn) {
    painter.setCompositionMode(mode);
    painter.fillRect(QRect(0, 0, kGrid, kGrid), QColor(176, 176, 176));
  }
  return picture;
}

QIcon icon(const Draw& draw) {
  QIcon result;
  for (const int size : {16, 24, 32, 48, 64, 128}) {
    result.addPixmap(pixmap(size, QPainter::CompositionMode_SourceOver, draw));
    result.addPixmap(pixmap(size, QPainter::CompositionMode_SourceIn, draw), QIcon::Disabled);
  }
  return result;
}

QPolygonF arrow(double left, double middle) {
  return {{left, middle - 2},  {left + 8, middle - 2}, {left + 8, middle - 6},
          {left + 15, middle}, {left + 8, middle + 6}, {left + 8, middle + 2},
          {left, middle + 2}};
}

}  // namespace

QIcon windowIcon() {
  return icon([](QPainter& painter) {
    painter.setBrush(kBlue);
    painter.drawRoundedRect(QRectF(3, 1, 20, 30), 2, 2);
    painter.setBrush(Qt::white);
    for (const int line : {6, 11, 25}) painter.drawRect(QRectF(7, line, 12, 2));
    painter.setBrush(kGreen);
    painter.setPen(QPen(Qt::white, 1.5));
    painter.drawPolygon(arrow(15, 18));
  });
}

QIcon runIcon() {
  return icon([](QPainter& painter) {
    painter.setBrush(kGreen);
    painter.drawPolygon(QPolygonF({{8, 4}, {28, 16}, {8, 28}}));
  });
}

QIcon stopIcon() {
  return icon([](QPainter& painter) {
    painter.setBrush(kRed);
    painter.drawRoundedRect(QRectF(6, 6, 20, 20), 2, 2);
  });
}

QIcon exitIcon() {
  return icon([](QPainter& painter) {
    painter.setBrush(kBlue);
    painter.drawPolygon(QPolygonF({{4, 3},
                                   {18, 3},
                                   {18, 8},
                                   {15, 8},
                                   {15, 6},
                                   {7, 6},
                                   {7, 26},
                                   {15, 26},
                                   {15, 24},
                                   {18, 24},
                                   {18, 29},
                                   {4, 29}}));
    painter.drawPolygon(arrow(13, 16));
  });
}

}  // namespace orvane
