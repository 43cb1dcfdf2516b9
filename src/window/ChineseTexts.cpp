#include "window/ChineseTexts.h"

#include <algorithm>
#include <string_view>

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

}  // namespace

QString ChineseTexts::translate(const char*, const char* sourceText, const char*, int) const {
  const auto* const found = std::ranges::find(kTexts, std::string_view(sourceText), &Text::english);
  if (found == std::end(kTexts)) return {};
  return QString::fromUtf8(found->chinese.data(), static_cast<qsizetype>(found->chinese.size()));
}

}  // namespace orvane
