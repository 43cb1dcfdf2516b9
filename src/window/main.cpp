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
#include "window/frmMain.h"
#include "window/screen_fit.h"

namespace {

// Also from inside a yield: no code of a run goes on after it.
[[noreturn]] void endProcess() {
  std::fflush(nullptr);
  std::_Exit(EXIT_SUCCESS);
}

int endSignals = -1;  // an eventfd, readable once a signal has asked for the end

void tellEndSignal(int) {
  const int oldError = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(endSignals, &one, sizeof one);
  errno = oldError;
}

/// Whatever ends the program from outside closes the window, as its close box does: in the event
/// loop or in a yield. A session manager does it through Qt.
void closeWhenAsked(QWidget& window) {
  // Qt calls exit() when the display has gone, which is how a session without a manager ends.
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
    if (action.sa_handler == SIG_IGN) continue;  // as nohup wants it
    action.sa_handler = tellEndSignal;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file-size limit is a failed write like a full disk

  orvane::keepFreedMemory();

  const orvane::InstanceGuard guard(orvane::programFolder());
  if (guard.anotherRuns()) return EXIT_SUCCESS;

  // The desktop's theme would bring its colours, which may be made for light text on dark.
  char option[] = "-platformtheme", theme[] = "generic";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.end(), {option, theme, nullptr});
  int argumentCount = argc + 2;
  QApplication application(argumentCount, arguments.data());
  orvane::fitToScreen(argv);
  orvane::applyAppearance();
  orvane::QtWindowServices services;
  orvane::installWindowServices(&services);

  orvane::frmMain window(orvane::RunOutPutBatch, endProcess);
  closeWhenAsked(window);
  window.show();
  return QApplication::exec();
}
