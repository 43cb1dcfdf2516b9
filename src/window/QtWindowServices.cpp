#include "window/QtWindowServices.h"

#include <QApplication>
#include <QMessageBox>

#include "window/qt_text.h"

namespace orvane {
namespace {

// The limit keeps a flood of events (a window that is dragged) from blocking the run.
constexpr int kLongestYieldMs = 100;

// The parent of a box, if a window exists yet.
QWidget* frontWindow() {
  if (QWidget* active = QApplication::activeWindow()) return active;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible()) return window;
  }
  return nullptr;
}

}  // namespace

void QtWindowServices::showBox(std::wstring_view text, std::wstring_view title, BoxIcon icon) {
  QMessageBox box(frontWindow());
  box.setWindowTitle(toQt(title));
  box.setTextFormat(Qt::PlainText);
  box.setText(toQt(text).replace(u'\r', u'\n'));
  box.setIcon(icon == BoxIcon::Critical ? QMessageBox::Critical : QMessageBox::NoIcon);
  box.addButton(QStringLiteral("确定"), QMessageBox::AcceptRole);
  box.setWindowModality(Qt::ApplicationModal);
  box.exec();
}

void QtWindowServices::yield() {
  QCoreApplication::processEvents(QEventLoop::AllEvents, kLongestYieldMs);
}

void QtWindowServices::showBusyPointer(bool busy) {
  if (busy == busy_) return;
  busy_ = busy;
  if (busy) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

}  // namespace orvane
