#include "window/appearance.h"

#include <QApplication>
#include <QFont>
#include <QStyle>

#include "foundation/program.h"
#include "window/icons.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

// 8.25 points at 96 dots an inch. The gap in the caption of lblPage, in which txtLiuShui lies,
// fits at this size only.
constexpr int kFontPixels = 11;

}  // namespace

void applyAppearance() {
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication::setPalette(QApplication::style()->standardPalette());

  QFont font;
  font.setFamilies({QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("Noto Sans CJK SC"),
                    QStringLiteral("Noto Sans SC"), QStringLiteral("WenQuanYi Zen Hei"),
                    QStringLiteral("sans-serif")});
  font.setPixelSize(kFontPixels);
  QApplication::setFont(font);

  QApplication::setApplicationDisplayName(toQt(kApplicationTitle));
  QApplication::setWindowIcon(windowIcon());
}

}  // namespace orvane
