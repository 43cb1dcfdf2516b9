#include "window/list_actions.h"

#include <QAction>
#include <QDesktopServices>
#include <QDialog>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QToolTip>
#include <QUrl>
#include <QVBoxLayout>
#include <filesystem>

#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"
#include "foundation/paths.h"
#include "foundation/text_encoding.h"
#include "window/help.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr std::size_t kMostOfLog = 1U << 20;  // bytes

QString logText(const std::wstring& file) {
  try {
    if (!mdlFolderAndFile::fileSystem().FileExists(file)) return QStringLiteral("今天还没有日志。");
    return toQt(mdlFolderAndFile::readLog(file, kMostOfLog));
  } catch (const std::exception& failure) {
    return QStringLiteral("日志读不出来：") + toQt(description(failure));
  }
}

// Called again when the window is reopened, and by F5.
void fill(QDialog& logWindow) {
  const std::wstring file = mdlFolderAndFile::logFileOfToday();
  logWindow.setWindowTitle(QStringLiteral("今天的日志 ") +
                           toQt(file.substr(file.find_last_of(L'\\') + 1)) +
                           QStringLiteral("（按 F5 刷新）"));
  auto& text = *logWindow.findChild<QPlainTextEdit*>();
  text.setPlainText(logText(file));
  text.moveCursor(QTextCursor::End);
}

void showLog(QWidget& window) {
  auto* logWindow = window.findChild<QDialog*>(QStringLiteral("logOfToday"));
  if (logWindow == nullptr) {
    logWindow = new QDialog(&window);
    logWindow->setObjectName(QStringLiteral("logOfToday"));
    logWindow->resize(window.size() * 0.8);
    auto* text = new QPlainTextEdit;
    text->setReadOnly(true);
    text->setAccessibleName(QStringLiteral("今天的日志"));
    (new QVBoxLayout(logWindow))->addWidget(text);
    QObject::connect(new QShortcut(QKeySequence(Qt::Key_F5), logWindow), &QShortcut::activated,
                     logWindow, [logWindow] { fill(*logWindow); });
  }
  fill(*logWindow);
  logWindow->show();
  logWindow->raise();
  logWindow->activateWindow();
}

// Failures appear in a tip, because a box would block the run.
void showTip(QWidget& list, const QString& text) {
  QToolTip::showText(list.mapToGlobal(QPoint(0, 0)), wrappedTip(text), &list);
}

void openOnDesktop(QWidget& list, const QString& path) {
  if (QDesktopServices::openUrl(QUrl::fromLocalFile(path))) return;
  showTip(list, QStringLiteral("桌面上没有能打开它的程序：") + path);
}

void openOutputFolder(QWidget& list, const std::wstring& SavePath) {
  if (SavePath.empty()) return showTip(list, QStringLiteral("还没有选择成果输出文件夹。"));
  const std::filesystem::path native = nativePath(SavePath);
  openOnDesktop(list, toQt(fromUtf8(native.lexically_normal().native())));
}

void openGuideFile(QWidget& list) {
  const QString file = guideFile();
  if (file.isEmpty()) return showTip(list, QStringLiteral("找不到操作手册。"));
  openOnDesktop(list, file);
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

void addListActions(QWidget& window, ProgressListView& list, const ExportForm& form) {
  // ProgressListView handles the first three keys.
  addAction(list, "复制(&C)\tCtrl+C", [&] { list.copySelectedLines(); });
  addAction(list, "全选(&A)\tCtrl+A", [&] { list.selectAll(); });
  addAction(list, "失败的原因(&R)\t回车", [&] { list.showReason(); });
  auto* separator = new QAction(&list);
  separator->setSeparator(true);
  list.addAction(separator);
  setWindowKey(addAction(list, "今天的日志(&L)", [&] { showLog(window); }), Qt::CTRL | Qt::Key_L);
  setWindowKey(addAction(list, "打开输出文件夹(&O)",
                         [&] { openOutputFolder(list, form.settings().SavePath); }),
               Qt::CTRL | Qt::Key_O);
  setWindowKey(addAction(list, "操作手册(&G)", [&] { openGuideFile(list); }), Qt::Key_F1);
}

}  // namespace orvane
