#include "window/list_actions.h"

#include <QAction>
#include <QToolTip>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "window/LogWindow.h"
#include "window/desktop.h"
#include "window/help.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

// Failures appear in a tip, because a box would block the run.
void showTip(QWidget& list, const QString& text) {
  QToolTip::showText(list.mapToGlobal(QPoint(0, 0)), wrappedTip(text), &list);
}

void open(QWidget& list, const QString& path) {
  openOnDesktop(list, path, [&list, path](const QString& reason) {
    showTip(list, QStringLiteral("打不开 %1：%2。").arg(path, reason));
  });
}

void openOutputFolder(QWidget& list, const std::wstring& SavePath) {
  if (SavePath.empty()) return showTip(list, QStringLiteral("还没有选择成果输出文件夹。"));
  try {
    const QString folder = toQt(nativeText(SavePath));
    if (mdlFolderAndFile::fileSystem().FolderExists(SavePath)) return open(list, folder);
    showTip(list,
            QStringLiteral("成果输出文件夹不在了（被移走或改名，或者磁盘没有接上）：") + folder);
  } catch (const std::exception& failure) {
    showTip(list, QStringLiteral("成果输出文件夹看不了：") + toQt(description(failure)));
  }
}

void openGuideFile(QWidget& list) {
  const QString file = guideFile();
  if (file.isEmpty()) return showTip(list, QStringLiteral("找不到操作手册。"));
  open(list, file);
}

template <typename Act>
QAction& addAction(QWidget& list, const char* caption, Act act) {
  auto* action = new QAction(QString::fromUtf8(caption), &list);
  QObject::connect(action, &QAction::triggered, &list, act);
  list.addAction(action);
  return *action;
}

// The key works wherever the focus is in the main window.
void setWindowKey(QAction& action, const QKeySequence& key) {
  action.setShortcut(key);
  action.setShortcutVisibleInContextMenu(true);
}

}  // namespace

void addListActions(QWidget& window, ProgressListView& list, const ExportForm& form,
                    const std::function<void()>& showProgress) {
  // ProgressListView handles the first three keys.
  addAction(list, "复制(&C)\tCtrl+C", [&] { list.copySelectedLines(); });
  addAction(list, "全选(&A)\tCtrl+A", [&] { list.selectAll(); });
  addAction(list, "这一行的原因(&R)\t回车", [&] { list.showReason(); });
  auto* separator = new QAction(&list);
  separator->setSeparator(true);
  list.addAction(separator);
  setWindowKey(addAction(list, "导出进度(&P)", showProgress), Qt::CTRL | Qt::Key_P);
  setWindowKey(addAction(list, "日志(&L)", [&] { LogWindow::open(window, LogWindow::Kind::Logs); }),
               Qt::CTRL | Qt::Key_L);
  setWindowKey(
      addAction(list, "导出清单(&T)", [&] { LogWindow::open(window, LogWindow::Kind::Reports); }),
      Qt::CTRL | Qt::Key_T);
  setWindowKey(addAction(list, "打开输出文件夹(&O)",
                         [&] { openOutputFolder(list, form.settings().SavePath); }),
               Qt::CTRL | Qt::Key_O);
  setWindowKey(addAction(list, "操作手册(&G)", [&] { openGuideFile(list); }), Qt::Key_F1);
}

}  // namespace orvane
