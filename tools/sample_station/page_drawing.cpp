#include "page_drawing.h"

#include <QFontDatabase>
#include <QPainter>
#include <QTextLayout>
#include <array>
#include <cmath>
#include <stdexcept>

#include "landscape.h"
#include "page_marks.h"
#include "sample_text.h"

namespace orvane::sample {

using namespace Qt::StringLiterals;

namespace {

// All coordinates are in points; the painter scales them to the resolution.
constexpr QSizeF kA4(595.3, 841.9);
constexpr double kLeft = 80;
constexpr double kRight = 525;
constexpr double kTop = 96;
constexpr double kBottom = 752;
const QColor kPaper(248, 246, 240);
const QColor kInk(38, 36, 38);
const QColor kHeadRed(200, 34, 40);

QFont pageFont(double size) {
  static const QString kFamily = u"WenQuanYi Micro Hei"_s;
  if (!QFontDatabase::hasFamily(kFamily)) {
    throw std::runtime_error("the font WenQuanYi Micro Hei is not installed (fonts-wqy-microhei)");
  }
  QFont font(kFamily);
  font.setPixelSize(static_cast<int>(std::lround(size)));
  font.setHintingPreference(QFont::PreferNoHinting);
  font.setStyleStrategy(
      static_cast<QFont::StyleStrategy>(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
  return font;
}

struct Column {
  double left;
  double right;
  double bottom;
};

// Draws a paragraph from `y` down and returns the position of the next one. Lines that do not fit
// in the column are omitted.
double setText(QPainter& painter, const QString& text, double size, Column column, double y) {
  QTextLayout layout(text, pageFont(size), painter.device());
  const double pitch = size * 1.72;
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(column.right - column.left);
    line.setPosition(QPointF(0, 0));
    if (y + pitch > column.bottom) break;
    line.draw(&painter, QPointF(column.left, y));
    y += pitch;
  }
  layout.endLayout();
  return y;
}

void setCentred(QPainter& painter, const QString& text, double size, double y) {
  painter.setFont(pageFont(size));
  painter.drawText(QRectF(kLeft - 30, y, kRight - kLeft + 60, size * 3.2),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, text);
}

void setPageNumber(QPainter& painter, std::uint64_t seed) {
  painter.setPen(kInk);
  setCentred(painter, u"— "_s + QString::number(1 + seed % 40) + u" —"_s, 12, 776);
}

void fillWithSections(QPainter& painter, double y, double size, Column column, Noise& noise) {
  for (int section = 1; y < column.bottom - size * 4; ++section) {
    y = setText(painter, sectionHeading(section, noise), size + 1, column, y);
    y = setText(painter, paragraph(4, noise), size, column, y);
    y = setText(painter, paragraph(3, noise), size, column, y);
  }
}

void drawNotice(QPainter& painter, Noise& noise) {
  painter.setPen(kHeadRed);
  setCentred(painter, u"云岭县档案管理办公室文件"_s, 33, 84);
  painter.setPen(kInk);
  setCentred(painter, documentNumber(noise), 14, 140);
  painter.fillRect(QRectF(kLeft, 166, kRight - kLeft, 2.4), kHeadRed);
  painter.setPen(kInk);
  setCentred(painter, noticeTitle(noise), 21, 190);
  const Column column{kLeft, kRight, kBottom};
  const double y = setText(painter, u"各有关单位："_s, 15, column, 258);
  fillWithSections(painter, y, 15, column, noise);
}

void drawSigned(QPainter& painter, Noise& noise) {
  const Column column{kLeft, kRight, 520};
  double y = setText(painter, paragraph(5, noise), 15, column, kTop);
  y = setText(painter, paragraph(4, noise), 15, column, y);
  y = setText(painter, paragraph(3, noise), 15, column, y);
  const Column signature{330, kRight, kBottom};
  setText(painter, u"云岭县档案管理办公室"_s, 15, signature, y + 60);
  setText(painter, u"　2023年11月6日"_s, 15, signature, y + 88);
  drawSeal(painter, QPointF(405, y + 84), noise);
  drawSignature(painter, QPointF(120, y + 96), noise);
}

void drawRegister(QPainter& painter, Noise& noise) {
  constexpr std::array kColumns{56.0, 84.0, 152.0, 214.0, 404.0, 462.0, 496.0, 543.0};
  constexpr std::array kHeads{u"序号",   u"文　号", u"责任者", u"题　　　名",
                              u"日　期", u"页数",   u"备注"};
  constexpr double kHead = 118;
  constexpr double kRow = 31;
  constexpr int kRows = 20;
  setCentred(painter, u"卷 内 文 件 目 录"_s, 24, 66);
  painter.setPen(QPen(kInk, 1.0));
  for (int line = 0; line <= kRows + 1; ++line) {
    const double y = kHead + line * kRow;
    painter.drawLine(QPointF(kColumns.front(), y), QPointF(kColumns.back(), y));
  }
  for (const double x : kColumns) {
    painter.drawLine(QPointF(x, kHead), QPointF(x, kHead + (kRows + 1) * kRow));
  }
  painter.setFont(pageFont(11));
  const auto cell = [&](std::size_t column, int row, int align, const QString& text) {
    const double left = kColumns[column] + 3;
    painter.drawText(QRectF(left, kHead + row * kRow, kColumns[column + 1] - left - 2, kRow),
                     align | Qt::AlignVCenter | Qt::TextWordWrap, text);
  };
  for (std::size_t i = 0; i < kHeads.size(); ++i) {
    cell(i, 0, Qt::AlignHCenter, QString::fromUtf16(kHeads[i]));
  }
  const int filled = 14 + static_cast<int>(noise.below(6));
  for (int row = 1; row <= filled; ++row) {
    const QStringList texts = registerRow(row, noise);
    for (int i = 0; i < texts.size(); ++i) {
      cell(static_cast<std::size_t>(i), row, i == 3 ? Qt::AlignLeft : Qt::AlignHCenter, texts[i]);
    }
  }
  drawSignature(painter, QPointF(430, 802), noise);
}

void drawReport(QPainter& painter, std::uint64_t seed, Noise& noise) {
  const Column column{kLeft, kRight, kBottom};
  double y = setText(painter, paragraph(4, noise), 15, column, kTop);
  const QRectF frame(kLeft + 8, y + 10, kRight - kLeft - 16, 286);
  const double scale = painter.device()->width() / kA4.width();
  painter.drawImage(frame, landscape((frame.size() * scale).toSize(), seed));
  painter.setPen(QPen(QColor(90, 88, 86), 0.7));
  painter.drawRect(frame);
  painter.setPen(kInk);
  setCentred(painter, photoCaption(noise), 12, frame.bottom() + 8);
  y = setText(painter, paragraph(5, noise), 15, column, frame.bottom() + 32);
  setText(painter, paragraph(5, noise), 15, column, y);
}

void drawDense(QPainter& painter, Noise& noise) {
  setCentred(painter, noticeTitle(noise), 18, 62);
  fillWithSections(painter, 108, 8, {54, 290, 778}, noise);
  fillWithSections(painter, 108, 8, {308, 544, 778}, noise);
}

}  // namespace

QImage drawPage(Design design, int dpi, std::uint64_t seed) {
  Noise noise(seed * 1000 + static_cast<std::uint64_t>(design));
  const double scale = dpi / 72.0;
  QImage page((kA4 * scale).toSize(), QImage::Format_RGB32);
  page.fill(kPaper);
  QPainter painter(&page);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                         QPainter::SmoothPixmapTransform);
  painter.scale(scale, scale);
  painter.translate(noise.between(-3, 3), noise.between(-3, 3));
  painter.rotate(noise.between(0.15, 0.6) * (noise.below(2) == 0 ? 1 : -1));
  drawFold(painter, kA4, kA4.height() * 0.505);
  drawPunchHoles(painter, kA4);
  painter.setPen(kInk);
  switch (design) {
    case Design::Notice:
      drawNotice(painter, noise);
      break;
    case Design::Signed:
      drawSigned(painter, noise);
      break;
    case Design::Register:
      drawRegister(painter, noise);
      break;
    case Design::Report:
      drawReport(painter, seed, noise);
      break;
    case Design::Dense:
      drawDense(painter, noise);
      break;
  }
  setPageNumber(painter, seed);
  return page;
}

}  // namespace orvane::sample
