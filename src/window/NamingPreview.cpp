#include "window/NamingPreview.h"

#include <QAccessible>
#include <QPainter>
#include <QStyledItemDelegate>
#include <filesystem>

#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/text_encoding.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr const wchar_t* kSampleBatch = L"2024-0001";
constexpr const wchar_t* kSampleDocument = L"0003";
constexpr std::int16_t kSamplePage = 2;
constexpr std::size_t kLongestShown = 400;

constexpr int kExample = Qt::UserRole;  // the example name of an entry

// The native form of a path.
std::wstring shownPath(const std::wstring& path) {
  const std::filesystem::path native = nativePath(path);
  std::wstring shown = fromUtf8(native.lexically_normal().native());
  if (shown.size() > kLongestShown) shown = shown.substr(0, kLongestShown) + L"……";
  return shown;
}

std::wstring mask(const ExportForm& form) {
  return pageNumberMask(form.text(TextBox::LiuShui));
}

std::wstring sampleFile(const ExportForm& form, const std::wstring& pattern) {
  return outputFile(form.settings(), pattern, mask(form),
                    {kSampleBatch, kSampleDocument, kSamplePage});
}

std::wstring sampleLines(const ExportForm& form) {
  const ExportSettings& settings = form.settings();
  if (settings.SavePath.empty()) return L"还没有选择成果输出文件夹。\n";
  const std::wstring file = sampleFile(form, form.renameTypeText());
  return std::wstring(L"例：档案 ") + kSampleBatch + L" 的第 " + kSampleDocument + L" 件，第 2 页" +
         (settings.IsMutiPage ? L"在这个文件里：\n" : L"存为：\n") + shownPath(file) + L"\n";
}

std::wstring warningLines(const ExportForm& form) {
  const std::wstring pattern = form.renameTypeText();
  const std::wstring none =
      pattern.empty() ? L"⚠ 还没有选择命名，文件名里没有档案（件）名称！\n" : L"";
  return none + collisionWarning(form.settings(), pattern, mask(form));
}

/// Draws the example name of an entry, right-aligned.
class ExampleDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const int used = option.fontMetrics.horizontalAdvance(index.data().toString());
    const QRect free = option.rect.adjusted(used + 24, 0, -8, 0);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->setFont(option.font);
    painter->setPen(
        option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::PlaceholderText));
    painter->drawText(free, Qt::AlignRight | Qt::AlignVCenter,
                      option.fontMetrics.elidedText(index.data(kExample).toString(),
                                                    Qt::ElideMiddle, free.width()));
  }
};

}  // namespace

std::wstring namingPreview(const ExportForm& form) {
  try {
    return sampleLines(form) + warningLines(form);
  } catch (const Failure&) {
    return L"页码位数或分割符不能用，请改正。\n";
  }
}

std::wstring exampleName(const ExportForm& form, const std::wstring& pattern) {
  try {
    const std::wstring file = sampleFile(form, pattern);
    const bool collides = !collisionWarning(form.settings(), pattern, mask(form)).empty();
    return file.substr(file.rfind(L'\\') + 1) + (collides ? L" ⚠" : L"");
  } catch (const Failure&) {
    return {};
  }
}

NamingPreview::NamingPreview(QComboBox& cboRenameType, QWidget& btnRun, const ExportForm& form)
    : cboRenameType_(cboRenameType),
      form_(form),
      tips_{Tip{&cboRenameType, cboRenameType.toolTip()}, Tip{&btnRun, btnRun.toolTip()}} {
  cboRenameType.setItemDelegate(new ExampleDelegate(&cboRenameType));
}

void NamingPreview::update() {
  for (const auto& [control, constant] : tips_) {
    control->setToolTip(toQt(namingPreview(form_)) + constant);
    QAccessibleEvent told(control, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&told);
  }
  for (int entry = 0; entry < cboRenameType_.count(); ++entry) {
    const QString pattern = cboRenameType_.itemText(entry);
    const QString example = toQt(exampleName(form_, fromQt(pattern)));
    cboRenameType_.setItemData(entry, example, kExample);
    cboRenameType_.setItemData(entry, pattern + u'：' + example, Qt::AccessibleTextRole);
  }
}

}  // namespace orvane
