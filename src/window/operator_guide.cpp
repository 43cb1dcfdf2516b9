#include "window/operator_guide.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include "foundation/WindowServices.h"
#include "foundation/paths.h"
#include "foundation/program.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr const wchar_t* kGuide = L"operator-guide.zh.html";

QString localName(const std::wstring& path) {
  return QFile::decodeName(nativePath(path).c_str());
}

}  // namespace

QString guideFile() {
  for (const std::wstring& folder :
       {programFolder() + L"\\doc\\", std::wstring(L"\\usr\\share\\doc\\orvane-export\\")}) {
    QString file = localName(folder + kGuide);
    if (QFileInfo(file).isReadable()) return file;
  }
  return {};
}

void openGuide() {
  const QString file = guideFile();
  if (file.isEmpty()) {
    windowServices().showBox(L"找不到操作手册：" + programFolder() + L"\\doc\\" + kGuide,
                             kApplicationTitle, BoxIcon::Critical);
  } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file))) {
    windowServices().showBox(L"没有能打开操作手册的浏览器。操作手册在：\r" + fromQt(file),
                             kApplicationTitle, BoxIcon::Critical);
  }
}

}  // namespace orvane
