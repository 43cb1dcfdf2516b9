#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QMenu>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>
#include <malloc.h>

#include "Station.h"

namespace orvane::test {
namespace {

class ProgressListTest : public Station {
 protected:
  ProgressListTest() {
    window.resize(933, 645);
    window.show();
    QCoreApplication::processEvents();
  }
  void add(int lines) {
    for (int i = 0; i < lines; ++i) list.addItem(L"第 " + std::to_wstring(i % 50) + L" 行");
  }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&list, key, modifiers);
  }
  std::string copied() {
    press(Qt::Key_C, Qt::ControlModifier);
    return QApplication::clipboard()->text().toStdString();
  }
  /// The last row that is visible.
  int lastRowShown() const {
    int y = list.viewport()->height() - 1;
    while (y > 0 && !list.indexAt({10, y}).isValid()) --y;
    return list.indexAt({10, y}).row();
  }

  ProgressListView& list = dynamic_cast<ProgressListView&>(window.listProcessLog());
};

TEST_F(ProgressListTest, ShowsTheNewestLineCompletelyUnlessTheOperatorScrolledBack) {
  for (const int lines : {1, 100, 10'000}) {
    add(lines);
    const QRect newest = list.visualRect(list.model()->index(list.model()->rowCount() - 1, 0));
    EXPECT_TRUE(list.viewport()->rect().contains(newest.adjusted(0, 0, -newest.width() + 1, 0)));
    const QPoint bottom = list.viewport()->mapTo(&window, list.viewport()->rect().bottomLeft());
    EXPECT_TRUE(window.rect().contains(bottom));
  }
  list.verticalScrollBar()->setValue(77);
  add(10);
  EXPECT_EQ(list.verticalScrollBar()->value(), 77);
  list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
  add(10);
  window.resize(933, 300);
  EXPECT_EQ(lastRowShown(), list.model()->rowCount() - 1);
}

TEST_F(ProgressListTest, CopiesTheSelectedLinesInTheirOrder) {
  add(80);
  list.setCurrentIndex(list.model()->index(70, 0));
  press(Qt::Key_Down, Qt::ShiftModifier);
  list.selectionModel()->select(list.model()->index(3, 0), QItemSelectionModel::Select);
  EXPECT_EQ(copied(), "第 3 行\n第 20 行\n第 21 行");
  press(Qt::Key_Home);
  EXPECT_EQ(copied(), "第 0 行");
  press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(std::ranges::count(copied(), '\n'), 79);
  list.clear();
  press(Qt::Key_Down);
  EXPECT_EQ(copied(), "");
  list.addItem(L"第 0 行");
  press(Qt::Key_Down);
  EXPECT_EQ(copied(), "第 0 行");
}

/// Counts the redraws of a list.
class Redraws : public QObject {
 public:
  explicit Redraws(ProgressListView& list) : list_(list) {
    list.viewport()->installEventFilter(this);
  }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::Paint) return false;
    ++count;
    linesShown = list_.model()->rowCount();
    return false;
  }

  int count = 0;
  int linesShown = 0;  ///< by the last redraw

 private:
  ProgressListView& list_;
};

TEST_F(ProgressListTest, LinesThatComeFasterThanTheScreenShowsThemAreDrawnTogether) {
  Redraws redraws(list);
  QElapsedTimer timer;
  timer.start();
  int lines = 0;
  for (; timer.elapsed() < 450; ++lines) {
    add(1);
    list.refreshInTime();
    QCoreApplication::processEvents();
    EXPECT_TRUE(lines > 0 || redraws.linesShown == 1);
  }
  EXPECT_LE(redraws.count, 2 + timer.elapsed() / 16);
  EXPECT_TRUE(QTest::qWaitFor([&] { return redraws.linesShown == lines; }));
  list.refreshInTime();
  add(1);
  list.refreshInTime();
  add(1);
  list.refresh();
  EXPECT_EQ(redraws.linesShown, lines + 2);
  add(1);  // without a request, the list is redrawn with the window
  QCoreApplication::processEvents();
  EXPECT_EQ(redraws.linesShown, lines + 3);
  for (int line = lines + 4; line < lines + 14; ++line) {  // before work that takes long
    add(1);
    list.refreshInTime();
    list.refreshNow();
    EXPECT_EQ(redraws.linesShown, line);
  }
  const int drawn = redraws.count;
  list.refreshNow();
  EXPECT_EQ(redraws.count, drawn);
}

TEST_F(ProgressListTest, WhatIsDrawnLineByLineIsTheList) {
  const auto expectDrawn = [this] {
    list.refresh();
    EXPECT_EQ(window.screen()->grabWindow(window.winId()).toImage(), window.grab().toImage());
  };
  for (int i = 0; i < 60; ++i) {
    list.addItem(std::wstring(i == 50 ? 90 : 3, L'宽') + std::to_wstring(i));
    i % 3 == 0 ? expectDrawn() : list.refreshInTime();
  }
  list.horizontalScrollBar()->setValue(37);
  list.verticalScrollBar()->setValue(5);
  expectDrawn();
  list.clear();
  add(2);
  QCoreApplication::processEvents();
  expectDrawn();
}

TEST_F(ProgressListTest, TimeAndMemoryPerLineDoNotGrowWithTheNumberOfLines) {
  const auto millisecondsFor500ShownLines = [this] {
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 500; ++i) {
      list.addItem(L"  ");
      list.refresh();
      QCoreApplication::processEvents();
    }
    return timer.elapsed();
  };
  const auto memoryInUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
  add(100);
  const auto early = millisecondsFor500ShownLines();
  const std::size_t before = memoryInUse();
  for (int i = 0; i < 40; ++i) {
    add(9'000);
    for (int failures = 0; failures < 1'000; ++failures) list.addItemWithReason(L"失败", L"原因");
    QCoreApplication::processEvents();  // as in the yields of a run
  }
  EXPECT_LT(memoryInUse(), before + (16U << 20));
  EXPECT_LT(millisecondsFor500ShownLines(), 6 * early + 1000);
  EXPECT_EQ(lastRowShown(), 401'099);
  press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_TRUE(list.selectionModel()->isSelected(list.model()->index(200'000, 0)));
}

TEST_F(ProgressListTest, TheReasonOfALineIsAvailableByMouseKeyboardAndScreenReader) {
  list.addItem(L"D1 导出成功！");
  list.addItemWithReason(L"D2 导出失败！", L"mdl-\\a<b>\\2.tif: No such file\n页码：2");
  list.addItemWithReason(L"D2 导出失败！", L"");
  list.addItem(L"D2 导出失败！");
  const auto tipAt = [&](int row) {
    QToolTip::hideText();
    const QPoint place = list.visualRect(list.model()->index(row, 0)).center();
    QHelpEvent asked(QEvent::ToolTip, place, list.viewport()->mapToGlobal(place));
    QApplication::sendEvent(list.viewport(), &asked);
    return QToolTip::text().toStdString();
  };
  for (const int row : {0, 2, 3}) EXPECT_THAT(tipAt(row), testing::StartsWith("导出的进度"));
  const std::string tip = tipAt(1);
  EXPECT_THAT(tip, testing::HasSubstr("mdl-\\a&lt;b&gt;\\2.tif: No such file\n页码：2<"));
  QToolTip::hideText();
  list.setCurrentIndex(list.model()->index(0, 0));
  press(Qt::Key_Return);
  EXPECT_THAT(QToolTip::text().toStdString(), testing::StartsWith("导出的进度"));
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(QToolTip::text().toStdString(), tip);
  const auto* spoken = QAccessible::queryAccessibleInterface(&list)->child(1);
  EXPECT_EQ(spoken->text(QAccessible::Description).toStdString(),
            "mdl-\\a<b>\\2.tif: No such file\n页码：2");
  EXPECT_EQ(copied(), "D2 导出失败！");
}

TEST_F(ProgressListTest, ReasonsThatAllDifferDoNotFillTheMemory) {
  const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
  for (int i = 0; i < 8'000; ++i) {
    list.addItemWithReason(L"失败", std::to_wstring(i) + std::wstring(9'000, L'因'));
  }
  EXPECT_LT(mallinfo2().uordblks + mallinfo2().hblkhd, before + (40U << 20));
  EXPECT_NE(list.model()->index(0, 0).data(Qt::ToolTipRole).toString(), "");
}

TEST_F(ProgressListTest, TheMenuOpensByMouseAndKeyboardWithoutBlockingTheRun) {
  add(3);
  const auto byEvent = [&](QContextMenuEvent::Reason reason) {
    QContextMenuEvent asked(reason, {5, 5}, list.viewport()->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(list.viewport(), &asked);
  };
  const std::function<void()> ways[] = {[&] { byEvent(QContextMenuEvent::Mouse); },
                                        [&] { byEvent(QContextMenuEvent::Keyboard); },
                                        [&] { press(Qt::Key_F10, Qt::ShiftModifier); }};
  for (const auto& open : ways) {
    open();  // must return at once
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    std::string captions;
    for (QAction* action : menu->actions()) captions += action->text().toStdString() + "|";
    EXPECT_EQ(captions,
              "复制(&C)\tCtrl+C|全选(&A)\tCtrl+A|这一行的原因(&R)\t回车||导出进度(&P)|日志(&L)|"
              "导出清单(&T)|"
              "打开输出文件夹(&O)|操作手册(&G)|");
    menu->actions()[1]->trigger();
    menu->actions()[0]->trigger();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "第 0 行\n第 1 行\n第 2 行");
    menu->close();
    list.clearSelection();
  }
}

TEST_F(ProgressListTest, ALineWiderThanTheListCanBeScrolled) {
  list.addItem(std::wstring(400, L'宽'));
  QCoreApplication::processEvents();
  EXPECT_TRUE(list.horizontalScrollBar()->isVisible());
  EXPECT_GE(list.horizontalScrollBar()->maximum() + list.viewport()->width(), 400 * 11);
  list.clear();
  EXPECT_EQ(list.horizontalScrollBar()->maximum(), 0);
}

}  // namespace
}  // namespace orvane::test
