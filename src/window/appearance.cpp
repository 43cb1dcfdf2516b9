#include "window/appearance.h"

#include <QApplication>
#include <QFont>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QScreen>
#include <QTranslator>
#include <algorithm>
#include <functional>
#include <string_view>
#include <unistd.h>

namespace orvane {

// Style, colours, font and texts.

namespace {

struct Text {
  std::string_view english, chinese;
};

// clang-format off
constexpr Text kTexts[] = {
    // Text boxes.
    {"&Undo", "撤消(&U)"},
    {"&Redo", "重做(&R)"},
    {"Cu&t", "剪切(&T)"},
    {"&Copy", "复制(&C)"},
    {"&Paste", "粘贴(&P)"},
    {"Delete", "删除"},
    {"Select All", "全选"},

    // Scroll bars.
    {"Scroll here", "滚动到这里"},
    {"Left edge", "最左边"},
    {"Right edge", "最右边"},
    {"Top", "最上面"},
    {"Bottom", "最下面"},
    {"Page left", "左移一页"},
    {"Page right", "右移一页"},
    {"Page up", "上翻一页"},
    {"Page down", "下翻一页"},
    {"Scroll left", "向左滚动"},
    {"Scroll right", "向右滚动"},
    {"Scroll up", "向上滚动"},
    {"Scroll down", "向下滚动"},
};
// clang-format on

/// Translates the menus of Qt's text boxes and scroll bars. Qt's own translations are a separate
/// package and follow the language of the desktop.
class ChineseTexts : public QTranslator {
 public:
  QString translate(const char*, const char* sourceText, const char*, int) const override {
    const auto* const found =
        std::ranges::find(kTexts, std::string_view(sourceText), &Text::english);
    if (found == std::end(kTexts)) return {};
    return QString::fromUtf8(found->chinese.data(), static_cast<qsizetype>(found->chinese.size()));
  }
  bool isEmpty() const override { return false; }
};

constexpr int kFontPixels = 11;  // 8.25 points at 96 dpi

struct Colour {
  QPalette::ColorRole role;
  QRgb enabled, disabled;
};

// Every text has a contrast of at least 4.5:1 to its background. This includes disabled texts,
// because the operator reads the options during a run.
constexpr QRgb kBlack = 0x000000, kWhite = 0xffffff, kGray = 0xefefef, kFaint = 0x646464;
constexpr Colour kColours[] = {
    {QPalette::Window, kGray, kGray},
    {QPalette::WindowText, kBlack, kFaint},
    {QPalette::Base, kWhite, kGray},
    {QPalette::AlternateBase, 0xf7f7f7, 0xf7f7f7},
    {QPalette::Text, kBlack, kFaint},
    {QPalette::PlaceholderText, kFaint, kFaint},
    {QPalette::Button, kGray, kGray},
    {QPalette::ButtonText, kBlack, kFaint},
    {QPalette::BrightText, kWhite, kWhite},
    {QPalette::Highlight, 0x1f6aa5, kFaint},
    {QPalette::HighlightedText, kWhite, kWhite},
    {QPalette::ToolTipBase, 0xffffdc, 0xffffdc},
    {QPalette::ToolTipText, kBlack, kBlack},
    {QPalette::Link, 0x0000ff, 0x0000ff},
    {QPalette::LinkVisited, 0x800080, 0x800080},
    {QPalette::Light, kWhite, kWhite},
    {QPalette::Midlight, 0xcacaca, 0xcacaca},
    {QPalette::Mid, 0xb8b8b8, 0xb8b8b8},
    {QPalette::Dark, 0x9f9f9f, 0xbebebe},
    {QPalette::Shadow, 0x767676, 0xb1b1b1},
};

QPalette lightPalette() {
  QPalette palette;
  for (const auto& [role, enabled, disabled] : kColours) {
    palette.setColor(QPalette::Active, role, enabled);
    palette.setColor(QPalette::Inactive, role, enabled);
    palette.setColor(QPalette::Disabled, role, disabled);
  }
  return palette;
}

}  // namespace

void applyAppearance() {
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication::setPalette(lightPalette());

  QFont font;
  font.setFamilies({QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("Noto Sans CJK SC"),
                    QStringLiteral("Noto Sans SC"), QStringLiteral("WenQuanYi Zen Hei"),
                    QStringLiteral("sans-serif")});
  font.setPixelSize(kFontPixels);
  QApplication::setFont(font);

  static ChineseTexts chineseTexts;
  QCoreApplication::installTranslator(&chineseTexts);
  QApplication::setWindowIcon(windowIcon());
}

// Icons.

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

// Scale.

namespace {

constexpr const char* kScale = "QT_SCALE_FACTOR";  // read once, when the application is created
constexpr const char* kFitted = "ORVANE_FITTED";   // set for the restarted process
constexpr QSize kFrame(8, 36);                     // the largest frame that desktops draw

}  // namespace

double fittingScale(QSize design, QSize available, double pixelRatio) {
  const QSize needed = design + kFrame;
  const double part = std::min(double(available.width()) / needed.width(),
                               double(available.height()) / needed.height());
  return std::min(1.0, std::max(part, 1 / pixelRatio));
}

void fitToScreen(QSize design, char** argv) {
  const bool isFitted = qEnvironmentVariableIsSet(kFitted);
  qunsetenv(kFitted);
  const QScreen& screen = *QGuiApplication::primaryScreen();
  const double scale =
      fittingScale(design, screen.availableGeometry().size(), screen.devicePixelRatio());
  if (isFitted || scale >= 1) return;

  bool isNumber = false;
  const double wanted = qEnvironmentVariable(kScale).toDouble(&isNumber);
  qputenv(kScale, QByteArray::number((isNumber && wanted > 0 ? wanted : 1) * scale));
  qputenv(kFitted, "1");
  execv("/proc/self/exe", argv);
}

}  // namespace orvane
