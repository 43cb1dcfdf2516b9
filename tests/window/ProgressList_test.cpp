#include <QClipboard>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QScrollBar>
#include <malloc.h>

#include "Station.h"
#include "window/LineStore.h"

namespace orvane::test {
namespace {

constexpr int kManyLines = 1'000'000;

std::wstring numbered(int number) {
  return L"第 " + std::to_wstring(number) + L" 行";
}

TEST(LineStore, EqualLinesAreNewOnceAndEveryLineComesBackInItsPlace) {
  LineStore store;
  for (int life = 0; life < 2; ++life) {
    for (int i = 0; i < 3000; ++i) EXPECT_EQ(store.add(numbered(i % 1000)), i < 1000);
    EXPECT_TRUE(store.add(L""));
    EXPECT_FALSE(store.add(L""));
    EXPECT_EQ(store.size(), 3002U);
    EXPECT_EQ(store.line(2345), "第 345 行");
    EXPECT_EQ(store.line(999), "第 999 行");
    EXPECT_EQ(store.line(3001), "");
    store.clear();
    EXPECT_EQ(store.size(), 0U);
  }
}

class ProgressListTest : public Station {
 protected:
  ProgressListTest() {
    window.resize(933, 645);
    window.show();
    QCoreApplication::processEvents();
  }

  void add(int lines) {
    for (int i = 0; i < lines; ++i) list.addItem(numbered(i % 50));
  }
  void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(&list, &event);
  }
  std::string copied() {
    press(Qt::Key_C, Qt::ControlModifier);
    return QApplication::clipboard()->text().toStdString();
  }
  /// The row that is drawn at the bottom of the list.
  int lastRowShown() const {
    int y = list.viewport()->height() - 1;
    while (y > 0 && !list.indexAt({10, y}).isValid()) --y;
    return list.indexAt({10, y}).row();
  }

  ProgressListView& list = dynamic_cast<ProgressListView&>(window.listProcessLog());
};

TEST_F(ProgressListTest, ShowsTheNewestLineWholeUnlessTheOperatorScrolledBack) {
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
  add(30);
  list.setCurrentIndex(list.model()->index(20, 0));
  EXPECT_EQ(copied(), "第 20 行");
  press(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(copied(), "第 20 行\n第 21 行");
  list.selectionModel()->select(list.model()->index(3, 0), QItemSelectionModel::Select);
  EXPECT_EQ(copied(), "第 3 行\n第 20 行\n第 21 行");
  press(Qt::Key_Home);
  EXPECT_EQ(copied(), "第 0 行");
  press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(std::ranges::count(copied(), '\n'), 29);
  window.listProcessLog().clear();
  press(Qt::Key_Down);
  EXPECT_EQ(copied(), "");
}

TEST_F(ProgressListTest, AMillionLinesStayQuickAndSmall) {
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
  add(100);
  const auto early = millisecondsFor500ShownLines();
  const auto memoryInUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
  const std::size_t before = memoryInUse();
  for (int i = 0; i < kManyLines; i += 10'000) {
    add(10'000);
    QCoreApplication::processEvents();  // a run yields
  }
  EXPECT_LT(memoryInUse(), before + (16U << 20));

  EXPECT_LT(millisecondsFor500ShownLines(), 6 * early + 1000);
  EXPECT_EQ(lastRowShown(), kManyLines + 1099);
  press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_TRUE(list.selectionModel()->isSelected(list.model()->index(kManyLines / 2, 0)));
}

TEST_F(ProgressListTest, ALineWiderThanTheListCanBeScrolledTo) {
  list.addItem(std::wstring(400, L'宽'));
  QCoreApplication::processEvents();
  EXPECT_TRUE(list.horizontalScrollBar()->isVisible());
  EXPECT_GE(list.horizontalScrollBar()->maximum() + list.viewport()->width(), 400 * 11);
  list.clear();
  EXPECT_EQ(list.horizontalScrollBar()->maximum(), 0);
}

}  // namespace
}  // namespace orvane::test
