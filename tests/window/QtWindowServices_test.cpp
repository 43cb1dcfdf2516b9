#include "window/QtWindowServices.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <gmock/gmock.h>

#include "foundation/InstanceGuard.h"
#include "foundation/program.h"
#include "support/AsOrdinaryUser.h"
#include "support/TempStation.h"

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

TEST(QtWindowServices, AYieldAlsoHandlesEventsPostedByItsEvents) {
  QObject target;
  int depth = 0;
  const std::function<void()> deeper = [&] {
    if (++depth < 20) QMetaObject::invokeMethod(&target, deeper, Qt::QueuedConnection);
  };
  QMetaObject::invokeMethod(&target, deeper, Qt::QueuedConnection);
  QtWindowServices().yield();
  EXPECT_EQ(depth, 20);
}

TEST(QtWindowServices, TheBusyPointerIsNotNested) {
  QtWindowServices services;
  for (const bool busy : {true, true, false, false}) {
    services.showBusyPointer(busy);
    const QCursor* pointer = QApplication::overrideCursor();
    EXPECT_EQ(pointer != nullptr, busy);
    EXPECT_TRUE(!busy || pointer->shape() == Qt::WaitCursor);
  }
}

TEST(InstanceGuard, LocksAFileIfTheFolderCannotBeLockedAndLogsIfNeitherCan) {
  TempStation station;
  const std::string noLock =
      "Orvane成果导出:工作站无法加锁，不能确定是否已有另一个程序在这里运行：.*: ";
  const struct {
    const char* rights;  // a folder that is not readable cannot be opened
    bool secondEnds, lockFileExists;
    std::string log;
  } cases[] = {{"755", true, false, ""},
               {"333", true, true, ""},
               {"111", true, true, ""},
               {"111", false, false, "(" + noLock + "Permission denied；.*\n){2}"}};
  station.shell("mkdir -m 777 Log");
  for (const auto& [rights, secondEnds, lockFileExists, log] : cases) {
    SCOPED_TRACE(rights);
    station.shell((secondEnds ? "chmod " : "rm Orvane.lock; chmod ") + std::string(rights) + " .");
    {
      const AsOrdinaryUser user;
      const InstanceGuard first(station.path()), second(station.path());
      EXPECT_FALSE(first.anotherRuns());
      EXPECT_EQ(second.anotherRuns(), secondEnds);
    }
    station.shell("chmod 755 .");
    EXPECT_EQ(std::filesystem::exists(station.native("Orvane.lock")), lockFileExists);
    EXPECT_THAT(station.takeLog(), testing::MatchesRegex(log));
  }
}

}  // namespace
}  // namespace orvane::test
