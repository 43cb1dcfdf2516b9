#include "window/desktop.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <unistd.h>

namespace orvane {
namespace {

const QString kNoProgram = QStringLiteral("桌面上没有能打开它的程序");

// Exit codes of xdg-open.
QString reasonOf(int exitCode) {
  constexpr int kNoTool = 3, kActionFailed = 4;
  if (exitCode == kNoTool || exitCode == kActionFailed) return kNoProgram;
  return QStringLiteral("xdg-open 失败（%1）").arg(exitCode);
}

}  // namespace

// QDesktopServices starts xdg-open too, but does not look at its result.
void openOnDesktop(QWidget& owner, const QString& path,
                   const std::function<void(const QString& reason)>& failed) {
  const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
  if (opener.isEmpty()) {
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path))) failed(kNoProgram);
    return;
  }
  auto* process = new QProcess(&owner);
  process->setStandardInputFile(QProcess::nullDevice());
  process->setStandardOutputFile(QProcess::nullDevice());
  process->setStandardErrorFile(QProcess::nullDevice());
  process->setChildProcessModifier([] { setsid(); });  // what it opens outlives this program
  QObject::connect(process, &QProcess::finished, &owner,
                   [process, failed](int exitCode, QProcess::ExitStatus status) {
                     if (status != QProcess::NormalExit || exitCode != 0)
                       failed(reasonOf(exitCode));
                     process->deleteLater();
                   });
  QObject::connect(process, &QProcess::errorOccurred, &owner,
                   [process, failed](QProcess::ProcessError error) {
                     if (error != QProcess::FailedToStart) return;
                     failed(process->errorString());
                     process->deleteLater();
                   });
  process->start(opener, {path});
}

}  // namespace orvane
