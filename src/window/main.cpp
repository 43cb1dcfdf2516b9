#include <QApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

#include "export/RunOutPutBatch.h"
#include "foundation/InstanceGuard.h"
#include "foundation/program.h"
#include "window/QtWindowServices.h"
#include "window/appearance.h"
#include "window/controls.h"
#include "window/frmMain.h"

namespace {

// May be called inside a yield. No code of a run is executed after it.
[[noreturn]] void endProcess() {
  std::fflush(nullptr);
  std::_Exit(EXIT_SUCCESS);
}

int endSignals = -1;  // an eventfd, readable after a signal that ends the program

void handleEndSignal(int) {
  const int oldError = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(endSignals, &one, sizeof one);
  errno = oldError;
}

// Makes everything that ends the program from outside close the window like its close box, in the
// event loop or in a yield. A session manager does so through Qt.
void closeOnEndOfSession(QWidget& window) {
  // Qt calls exit() when the display is gone, which ends a session without a manager.
  static QPointer<QWidget> open;
  open = &window;
  std::atexit([] {
    if (open) open->close();
  });

  endSignals = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (endSignals < 0) return;
  auto* notifier = new QSocketNotifier(endSignals, QSocketNotifier::Read, &window);
  QObject::connect(notifier, &QSocketNotifier::activated, &window, &QWidget::close);
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;  // set by nohup
    action.sa_handler = handleEndSignal;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // at a file-size limit, a write fails as on a full disk

  orvane::useUtf8Locale();
  orvane::keepFreedMemory();

  const orvane::InstanceGuard guard(orvane::programFolder());
  if (guard.anotherRuns()) return EXIT_SUCCESS;

  // Without a platform theme, because the desktop may have colours for light text on dark.
  char option[] = "-platformtheme", theme[] = "generic";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.end(), {option, theme, nullptr});
  int argumentCount = argc + 2;
  QApplication application(argumentCount, arguments.data());
  orvane::fitToScreen(orvane::kClientSize, argv);
  orvane::applyAppearance();
  orvane::QtWindowServices services;
  orvane::installWindowServices(&services);

  orvane::frmMain window(orvane::RunOutPutBatch, endProcess);
  closeOnEndOfSession(window);
  window.show();
  return QApplication::exec();
}
