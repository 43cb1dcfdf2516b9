#include "window/appearance.h"

#include <QApplication>
#include <QFont>
#include <QPalette>

#include "window/ChineseTexts.h"
#include "window/icons.h"

namespace orvane {
namespace {

constexpr int kFontPixels = 11;  // 8.25 points at 96 dots an inch

struct Colour {
  QPalette::ColorRole role;
  QRgb enabled, disabled;
};

// Every text has a contrast of 4.5:1 at least to what it is written on, disabled texts too: an
// operator reads the options by them during a run.
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

}  // namespace orvane
