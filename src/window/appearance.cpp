#include "window/appearance.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QTranslator>
#include <algorithm>
#include <string_view>

#include "window/icons.h"

namespace orvane {
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

}  // namespace orvane
