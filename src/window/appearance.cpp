#include "window/appearance.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QStyle>

#include "window/ChineseTexts.h"
#include "window/icons.h"

namespace orvane {
namespace {

// 8.25 points at 96 dots an inch. The gap in the caption of lblPage, in which txtLiuShui lies,
// fits at this size only.
constexpr int kFontPixels = 11;

// The style's own gray of what is disabled is too faint to read the options by during a run.
QPalette readablePalette() {
  QPalette palette = QApplication::style()->standardPalette();
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
  }
  return palette;
}

}  // namespace

void applyAppearance() {
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication::setPalette(readablePalette());

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

}  // namespace orvane
