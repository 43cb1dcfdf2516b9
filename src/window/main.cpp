#include <QApplication>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "export/RunOutPutBatch.h"
#include "foundation/kept_memory.h"
#include "foundation/program.h"
#include "window/InstanceGuard.h"
#include "window/QtWindowServices.h"
#include "window/appearance.h"
#include "window/frmMain.h"
#include "window/screen_fit.h"

namespace {

// Also from inside a yield: no code of a run goes on behind it.
[[noreturn]] void endProcess() {
  std::fflush(nullptr);
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file-size limit is a failed write like a full disk

  orvane::keepFreedMemory();

  const orvane::InstanceGuard guard(orvane::programFolder());
  if (guard.anotherRuns()) return EXIT_SUCCESS;

  QApplication application(argc, argv);
  orvane::fitToScreen(argv);
  orvane::applyAppearance();
  orvane::QtWindowServices services;
  orvane::installWindowServices(&services);

  orvane::frmMain window(orvane::RunOutPutBatch, endProcess);
  window.show();
  return QApplication::exec();
}
