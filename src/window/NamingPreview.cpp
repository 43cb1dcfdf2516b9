#include "window/NamingPreview.h"

#include <QEvent>

#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/path_text.h"
#include "foundation/utf8_text.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr const wchar_t* kSampleBatch = L"2024-0001";
constexpr const wchar_t* kSampleDocument = L"0003";
constexpr std::int16_t kSamplePage = 2;
constexpr std::size_t kLongestShown = 400;

// As the file system writes it.
std::wstring shownPath(const std::wstring& path) {
  std::wstring shown = fromUtf8(nativePath(path).lexically_normal().native());
  if (shown.size() > kLongestShown) shown = shown.substr(0, kLongestShown) + L"……";
  return shown;
}

std::wstring mask(const ExportForm& form) {
  return pageNumberMask(form.text(TextBox::LiuShui));
}

std::wstring sampleFile(const ExportForm& form) {
  const ExportSettings& settings = form.settings();
  if (settings.SavePath.empty()) return L"还没有选择成果输出文件夹。\n";
  const std::wstring file = outputFile(settings, form.renameTypeText(), mask(form),
                                       {kSampleBatch, kSampleDocument, kSamplePage});
  return std::wstring(L"例：档案 ") + kSampleBatch + L" 的第 " + kSampleDocument + L" 件，第 2 页" +
         (settings.IsMutiPage ? L"在这个文件里：\n" : L"存为：\n") + shownPath(file) + L"\n";
}

}  // namespace

std::wstring namingWarning(const ExportForm& form) {
  const std::wstring pattern = form.renameTypeText();
  const std::wstring none =
      pattern.empty() ? L"⚠ 还没有选择命名，文件名里没有档案（件）名称！\n" : L"";
  try {
    return none + collisionWarning(form.settings(), pattern, mask(form));
  } catch (const Failure&) {
    return L"⚠ 页码位数不能用，请改正。\n";
  }
}

std::wstring namingPreview(const ExportForm& form) {
  try {
    return sampleFile(form) + namingWarning(form);
  } catch (const Failure&) {
    return L"页码位数或分割符不能用，请改正。\n";
  }
}

NamingPreview::NamingPreview(QWidget& cboRenameType, QWidget& btnRun, const ExportForm& form)
    : form_(form),
      tips_{Tip{&cboRenameType, namingPreview, cboRenameType.toolTip()},
            Tip{&btnRun, namingWarning, btnRun.toolTip()}} {
  for (const Tip& tip : tips_) tip.control->installEventFilter(this);
}

bool NamingPreview::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    for (const Tip& tip : tips_) {
      if (tip.control == watched) tip.control->setToolTip(toQt(tip.front(form_)) + tip.constant);
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace orvane
