#include "window/NamingPreview.h"

#include <QEvent>

#include "export/OutputNaming.h"
#include "foundation/Failure.h"
#include "foundation/path_text.h"
#include "foundation/utf8_text.h"
#include "settings/NamingPattern.h"
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

std::wstring samplePath(const ExportForm& form) {
  const ExportSettings& settings = form.settings();
  const std::wstring folder = docOutputFolder(
      batchOutputFolder(settings.SavePath, settings.IsCreateBatchFolder, kSampleBatch),
      settings.IsCreateDocFolder, kSampleDocument);
  const std::wstring stem = documentStem(form.renameTypeText(), kSampleBatch, kSampleDocument,
                                         settings.ReNameSp1, settings.ReNameSp2);
  if (settings.IsMutiPage) return multiPageFilePath(folder, stem, settings.SaveFileType);
  return pageFilePath(folder, stem, kSamplePage, pageNumberMask(form.text(TextBox::LiuShui)),
                      settings.SaveFileType);
}

std::wstring warning(const ExportForm& form) {
  const std::wstring pattern = form.renameTypeText();
  if (pattern.empty()) return L"\n注意：还没有选择命名，文件名里没有档案（件）名称！";
  const bool namesNoDocument = pattern == kNameOfPage;
  if (namesNoDocument && !form.settings().IsCreateDocFolder) {
    return L"\n注意：文件名里没有档案（件）名称，各件的文件会互相覆盖；请勾选第二层文件夹！";
  }
  return {};
}

}  // namespace

std::wstring namingPreview(const ExportForm& form) {
  if (form.settings().SavePath.empty()) return L"还没有选择成果输出文件夹。";
  try {
    return std::wstring(L"例：档案 ") + kSampleBatch + L" 的第 " + kSampleDocument +
           L" 件，第 2 页" + (form.settings().IsMutiPage ? L"在这个文件里：\n" : L"存为：\n") +
           shownPath(samplePath(form)) + warning(form);
  } catch (const Failure&) {
    return L"页码位数或分割符不能用，请改正。";
  }
}

NamingPreview::NamingPreview(QWidget& cboRenameType, const ExportForm& form)
    : cboRenameType_(cboRenameType), form_(form), keyLine_(cboRenameType.toolTip()) {
  cboRenameType_.installEventFilter(this);
}

bool NamingPreview::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ToolTip) show();
  return QObject::eventFilter(watched, event);
}

void NamingPreview::show() {
  cboRenameType_.setToolTip(toQt(namingPreview(form_)) + u'\n' + keyLine_);
}

}  // namespace orvane
