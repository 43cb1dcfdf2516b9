#include "window/BrowseForFolder.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>

#include "foundation/path_text.h"
#include "window/qt_text.h"

namespace orvane {

std::wstring BrowseForFolder(QWidget* hOwner, const std::wstring& sTitle) {
  QFileDialog dialog(hOwner, toQt(sTitle), QDir::homePath());
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setViewMode(QFileDialog::List);  // a folder has no size, and only one kind
  dialog.setLabelText(QFileDialog::LookIn, QStringLiteral("位置："));
  dialog.setLabelText(QFileDialog::FileName, QStringLiteral("文件夹："));
  dialog.setLabelText(QFileDialog::FileType, QStringLiteral("类型："));
  dialog.setLabelText(QFileDialog::Accept, QStringLiteral("确定"));
  dialog.setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
  if (dialog.exec() != QDialog::Accepted) return {};
  return pathText(QFile::encodeName(dialog.selectedFiles().value(0)).toStdString());
}

}  // namespace orvane
