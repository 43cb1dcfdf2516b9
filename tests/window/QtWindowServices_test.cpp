#include "window/QtWindowServices.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <gmock/gmock.h>

namespace orvane::test {
namespace {

TEST(QtWindowServices, ABoxIsModalAndShowsTextTitleIconAndOneButton) {
  QtWindowServices services;
  for (const BoxIcon icon : {BoxIcon::None, BoxIcon::Critical}) {
    bool seen = false;
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      seen = true;
      EXPECT_EQ(box->text().toStdString(), "<b>坏</b>\nB:\\x");
      EXPECT_EQ(box->textFormat(), Qt::PlainText);
      EXPECT_EQ(box->windowTitle().toStdString(), "提醒");
      EXPECT_EQ(box->icon(), icon == BoxIcon::None ? QMessageBox::NoIcon : QMessageBox::Critical);
      EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
      ASSERT_EQ(box->buttons().size(), 1);
      box->buttons().front()->click();
    });
    services.showBox(L"<b>坏</b>\rB:\\x", L"提醒", icon);
    EXPECT_TRUE(seen);
  }
}

TEST(QtWindowServices, AYieldHandlesAlsoTheEventsThatItsEventsBring) {
  QObject target;
  int depth = 0;
  const std::function<void()> deeper = [&] {
    if (++depth < 20) QMetaObject::invokeMethod(&target, deeper, Qt::QueuedConnection);
  };
  QMetaObject::invokeMethod(&target, deeper, Qt::QueuedConnection);
  QtWindowServices().yield();
  EXPECT_EQ(depth, 20);
}

TEST(QtWindowServices, TheBusyPointerDoesNotPileUp) {
  QtWindowServices services;
  for (const bool busy : {true, true, false, false}) {
    services.showBusyPointer(busy);
    const QCursor* pointer = QApplication::overrideCursor();
    EXPECT_EQ(pointer != nullptr, busy);
    EXPECT_TRUE(!busy || pointer->shape() == Qt::WaitCursor);
  }
}

}  // namespace
}  // namespace orvane::test
