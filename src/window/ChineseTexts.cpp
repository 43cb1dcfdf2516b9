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

    // Message boxes.
    {"OK", "确定"},
    {"Cancel", "取消"},
    {"&Yes", "是(&Y)"},
    {"&No", "否(&N)"},

    // The folder chooser: what it shows.
    {"Name", "名称"},
    {"Size", "大小"},
    {"Type", "类型"},
    {"Date Modified", "修改日期"},
    {"Show ", "显示"},
    {"Computer", "计算机"},
    {"Drive", "磁盘"},
    {"Folder", "文件夹"},
    {"Shortcut", "链接"},
    {"File", "文件"},
    {"Unknown", "未知"},
    {"Directories", "文件夹"},
    {"All files (*)", "所有文件 (*)"},
    {"All Files (*)", "所有文件 (*)"},
    {"Files", "文件夹列表"},
    {"Sidebar", "侧栏"},
    {"List of places and bookmarks", "常用位置和书签"},
    {"Recent Places", "最近的位置"},

    // The folder chooser: its buttons and menus.
    {"Back", "后退"},
    {"Go back", "回到前一个文件夹"},
    {"Forward", "前进"},
    {"Go forward", "到后一个文件夹"},
    {"Parent Directory", "上一级"},
    {"Go to the parent directory", "到上一级文件夹"},
    {"Create New Folder", "新建文件夹"},
    {"Create a New Folder", "新建一个文件夹"},
    {"List View", "列表"},
    {"Change to list view mode", "只列出名称"},
    {"Detail View", "详细列表"},
    {"Change to detail view mode", "列出名称、类型和日期"},
    {"&Rename", "重命名(&R)"},
    {"&Delete", "删除(&D)"},
    {"Show &hidden files", "显示隐藏的文件夹(&H)"},
    {"&New Folder", "新建文件夹(&N)"},
    {"New Folder", "新建文件夹"},
    {"Remove", "移除"},

    // The folder chooser: its messages.
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     "%1\n找不到这个文件夹，请检查名称。"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     "%1\n找不到，请检查名称。"},
    {"Are you sure you want to delete '%1'?", "确定要删除“%1”吗？"},
    {"'%1' is write protected.\nDo you want to delete it anyway?", "“%1”有写保护。\n仍要删除吗？"},
    {"Could not delete directory.", "文件夹没有删除成功。"},
};
// clang-format on

}  // namespace

QString ChineseTexts::translate(const char*, const char* sourceText, const char*, int) const {
  const auto* const found = std::ranges::find(kTexts, std::string_view(sourceText), &Text::english);
  if (found == std::end(kTexts)) return {};
  return QString::fromUtf8(found->chinese.data(), static_cast<qsizetype>(found->chinese.size()));
}

}  // namespace orvane
