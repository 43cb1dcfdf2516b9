// Tool tips, keys, screen readers, the naming preview, and the fit to small screens.

#include <QAccessible>
#include <QGroupBox>
#include <QHelpEvent>
#include <QPushButton>
#include <QTest>
#include <QToolTip>
#include <set>

#include "Station.h"
#include "window/appearance.h"
#include "window/controls.h"

namespace orvane::test {
namespace {

class Help : public Station {
 protected:
  Help() {
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window)) throw std::runtime_error("no active window");
  }
  /// The key in the tool tip of a control.
  static QKeySequence keyOf(const QWidget& control) {
    const QString tip = control.toolTip();
    return QKeySequence(tip.mid(tip.indexOf("Alt+")));
  }
  /// What a screen reader gets.
  static QAccessibleInterface& accessible(const QWidget& control) {
    return *QAccessible::queryAccessibleInterface(&const_cast<QWidget&>(control));
  }
  void press(const QWidget& control) { QTest::keySequence(&window, keyOf(control)); }
};

TEST_F(Help, EveryControlHasAToolTipANameAndAKey) {
  find<QPushButton>("btnStop").setEnabled(true);
  std::set<QString> keys;
  for (const ControlRow& row : kControls) {
    if (!takesFocus(row.kind)) continue;
    SCOPED_TRACE(row.name);
    QWidget& control = find(row.name);
    QWidget* focus = control.focusProxy() != nullptr ? control.focusProxy() : &control;
    EXPECT_FALSE(focus->accessibleName().isEmpty());
    EXPECT_TRUE(keys.insert(keyOf(control).toString()).second && keyOf(control).count() == 1);
    bool clicked = false;
    if (auto* button = qobject_cast<QAbstractButton*>(&control)) {
      button->disconnect();
      QObject::connect(button, &QAbstractButton::clicked, [&] { clicked = true; });
    }
    window.setFocus();
    press(control);
    EXPECT_EQ(QApplication::focusWidget(), focus);
    EXPECT_EQ(clicked, qobject_cast<QAbstractButton*>(&control) != nullptr);
  }
}

TEST_F(Help, EnterStartsARunAndEscapeDoesNothing) {
  int runs = 0;
  run = [&](RunHost& host) {
    ++runs;
    for (const bool running : {true, false}) {
      host.enableBtnRun(!running);
      host.RefreshRunButtons();
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);  // once too often
      EXPECT_FALSE(host.IsStopRequested());
      find("btnStop").setFocus();
    }
  };
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    find("btnRun").setFocus();
    QTest::keyClick(&find("btnRun"), key);
  }
  EXPECT_EQ(runs, 2);
  EXPECT_TRUE(window.isVisible());

  find("Frame1").setEnabled(false);  // as in a run: the keys of its buttons are disabled too
  QLineEdit& text = find<QLineEdit>("txtSp1");
  text.setFocus();
  QTest::keyClick(&text, Qt::Key_P, Qt::AltModifier);  // the key of PDF
  EXPECT_EQ(window.settings().SaveFileType, 0);
  EXPECT_EQ(text.text().toStdString(), "-");
}

TEST_F(Help, AScreenReaderGetsTheLinesAndTheCaptionOfEachFrame) {
  for (const auto* frame : window.findChildren<QGroupBox*>()) {
    EXPECT_EQ(accessible(*frame).text(QAccessible::Name), frame->title());
  }
  for (int line = 0; line < 9000; ++line) {
    window.listProcessLog().addItem(L"第 " + std::to_wstring(line) + L" 行");
  }
  auto& list = dynamic_cast<ProgressListView&>(window.listProcessLog());
  list.setFocus();
  for (int i = 0; i < 3; ++i) QTest::keyClick(&list, Qt::Key_Down);
  QAccessibleInterface& lines = accessible(list);
  EXPECT_EQ(lines.role(), QAccessible::List);
  EXPECT_EQ(lines.text(QAccessible::Name).toStdString(), "导出进度");
  EXPECT_EQ(lines.text(QAccessible::Description), find("listProcessLog").toolTip());
  ASSERT_EQ(lines.childCount(), 9000);
  for (int line = 0; line < 9000; ++line) {
    ASSERT_EQ(lines.child(line)->text(QAccessible::Name), list.model()->index(line, 0).data());
  }
  QAccessibleInterface* const current = lines.focusChild();
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(current, lines.child(2));
  EXPECT_EQ(current->text(QAccessible::Name).toStdString(), "第 2 行");
  EXPECT_EQ(current->parent(), &lines);
  EXPECT_EQ(lines.indexOfChild(current), 2);
  EXPECT_TRUE(current->state().focused && current->state().selected && !current->state().offscreen);
  const QPoint middle = current->rect().center();
  EXPECT_EQ(lines.childAt(middle.x(), middle.y()), current);
  EXPECT_TRUE(lines.child(8999)->state().offscreen);
  EXPECT_EQ(lines.child(9000), nullptr);
  list.clear();
  EXPECT_FALSE(current->isValid());
  EXPECT_EQ(lines.childCount(), 0);
}

TEST_F(Help, TheNamingListAndTheRunButtonShowTheResultingFileNamesAtOnce) {
  QComboBox& names = find<QComboBox>("cboRenameType");
  const auto preview = [&](const char* name) {
    return accessible(find(name)).text(QAccessible::Description).toStdString();
  };
  const auto examples = [&] {
    std::string all;
    for (int i = 0; i < names.count(); ++i) {
      all += names.itemData(i, Qt::AccessibleTextRole).toString().toStdString() + "\n";
    }
    return all;
  };
  const std::string none = "还没有选择成果输出文件夹。\n", runs = "从最早的一批开始";
  const std::string warning =
      "⚠ 会互相覆盖，都存为 0001001.tif：\n";  // named after the document only
  EXPECT_THAT(preview("cboRenameType"), testing::StartsWith(none + warning));
  EXPECT_THAT(preview("btnRun"), testing::AllOf(testing::StartsWith(none + warning),
                                                testing::HasSubstr("。\n" + runs)));
  click("chkCreateBatchFolder");
  find<QLineEdit>("txtSp2").setText("_");
  EXPECT_EQ(examples(),
            "档案（件）名称：0003002.tif\n页码：002.tif ⚠\n档案（件）名称 + 页码：0003_002.tif\n"
            "档案名称 + 档案（件）名称：2024-0001-0003002.tif\n"
            "档案名称 + 档案（件）名称 + 页码：2024-0001-0003_002.tif\n");
  find<QLineEdit>("txtLiuShui").setText("1");
  EXPECT_THAT(examples(), testing::HasSubstr("\n档案（件）名称 + 页码：0003_2.tif\n"));
  names.setCurrentIndex(2);
  emit names.activated(2);
  EXPECT_THAT(preview("btnRun"), testing::StartsWith(none + runs));
  click("optSaveFileType_2");
  click("optMutiPage_1");
  EXPECT_EQ(examples(),
            "档案（件）名称：0003.pdf\n档案名称 + 档案（件）名称：2024-0001-0003.pdf\n");
  EXPECT_THAT(preview("btnRun"), testing::StartsWith(none + "⚠ 还没有选择命名"));
  QAccessibleInterface& list = accessible(*names.view());
  ASSERT_EQ(list.childCount(), 2);
  EXPECT_EQ(list.child(0)->text(QAccessible::Name).toStdString(), "档案（件）名称：0003.pdf");
  EXPECT_EQ(names.itemText(0).toStdString(), "档案（件）名称");

  // The disk is examined when the operator comes to a control.
  folder.shell(
      "mkdir -p Batchs/out; printf '[Setting]\\r\\nSavePath=%s\\Batchs\\out\\r\\n' \"$(pwd "
      "| tr / '\\\\')\" | iconv -f UTF-8 -t CP936 >data.ini");
  frmMain inScanTree([](RunHost&) {}, [] {});
  inScanTree.show();
  auto& list2 = *inScanTree.findChild<QComboBox*>();
  const std::string inBatchs = "⚠ 输出位置在扫描件文件夹（Batchs）内，不能导出！";
  EXPECT_EQ(list2.toolTip().toStdString().find(inBatchs), std::string::npos);
  QEnterEvent enter({1, 1}, {1, 1}, list2.mapToGlobal(QPoint(1, 1)));
  QApplication::sendEvent(&list2, &enter);
  EXPECT_THAT(accessible(list2).text(QAccessible::Description).toStdString(),
              testing::HasSubstr(inBatchs));
  EXPECT_THAT(list2.itemData(4, Qt::AccessibleTextRole).toString().toStdString(),
              testing::EndsWith(".tif ⚠"));
}

TEST_F(Help, TheTipsOfTheListAndOfTheStopButtonShowTheProgressAndTheEnd) {
  const auto setWaiting = [&](int batches) {
    std::string rows;
    for (int i = 0; i < batches; ++i) rows += ", ('B', '完成扫描', 1)";
    folder.shell(
        "rm -f fresh; sqlite3 fresh \"create table T_BatchInfo (BatchID, BatchState, PaperNum); "
        "insert into T_BatchInfo values ('X', '', 1)" +
        rows + "\"; mv fresh Orvane.dll");
  };
  QWidget &list = find("listProcessLog"), &stop = find("btnStop");
  QWidget& view = *list.focusProxy();
  const auto spoken = [](const QWidget& control) {
    return accessible(control).text(QAccessible::Description).toStdString();
  };
  const QString tipOfList = list.toolTip(), tipOfStop = stop.toolTip();
  const auto tip = [] { return QToolTip::isVisible() ? QToolTip::text().toStdString() : ""; };
  const auto updatesTo = [&](const std::string& text) {  // while the tip is shown
    return QTest::qWaitFor([&] { return tip().find(text) != std::string::npos; });
  };
  const auto ask = [&](QWidget& control) {
    QHelpEvent asked(QEvent::ToolTip, {1, 1}, control.mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(&control, &asked);
    return tip();
  };
  run = [&](RunHost& host) {
    host.enableBtnRun(false);
    host.RefreshRunButtons();
    host.progress().beginRun();
    host.progress().beginBatch(L"<b>B1", 9);
    host.progress().beginDocument(L"D1");
    host.progress().beginPage(2, 9);
    setWaiting(3);
    const std::string begin = "正在导出档案【&lt;b&gt;B1】的 D1 件：第 2 页，共 9 页\n";
    EXPECT_THAT(ask(list), testing::HasSubstr(begin + "已完成 0 批，还有 2 批等待导出\n"));
    setWaiting(2);
    host.progress().beginPage(3, 9);
    EXPECT_TRUE(updatesTo("第 3 页，共 9 页\n已完成 0 批，还有 2 批等待导出\n")) << tip();
    host.progress().endBatch(true);
    host.progress().beginBatch(L"B2", 9);
    EXPECT_TRUE(updatesTo("已完成 1 批，还有 1 批等待导出\n")) << tip();
    EXPECT_THAT(ask(stop), testing::AllOf(testing::StartsWith("正在导出档案【B2】\n"),
                                          testing::EndsWith(tipOfStop.toStdString())));
    // Without a mouse: Ctrl+P, and Enter on a line without a reason.
    const auto hides = [&] { return QTest::qWaitFor([&] { return tip().empty(); }); };
    stop.setFocus();
    QToolTip::hideText();
    EXPECT_TRUE(hides());
    QTest::keySequence(&window, QKeySequence("Ctrl+P"));
    EXPECT_THAT(tip(), testing::StartsWith("正在导出档案【B2】\n"));
    QTest::keySequence(&window, QKeySequence("Ctrl+P"));
    EXPECT_TRUE(hides());
    host.listProcessLog().addItem(L"D1 导出成功！");
    view.setFocus();
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_Return);
    host.progress().beginDocument(L"D2");
    EXPECT_TRUE(updatesTo("正在导出档案【B2】的 D2 件\n")) << tip();
    QTest::keyClick(&view, Qt::Key_Home);
    EXPECT_TRUE(hides());
    // A screen reader gets the progress without a tip.
    QAccessible::setActive(true);
    host.progress().beginDocument(L"D3");
    for (const QWidget* control : {&view, &stop}) {
      EXPECT_TRUE(QTest::qWaitFor([&] {
        return spoken(*control).find("D3 件") != std::string::npos;
      })) << spoken(*control);
    }
    QAccessible::setActive(false);
    setWaiting(7);
    click("btnStop");
    const std::string received = "已收到停止，这一批做完就停下来。\n正在导出档案【B2】的 D3 件\n";
    EXPECT_THAT(tip(), testing::StartsWith(received + "已完成 1 批，还有 6 批等待导出\n"));
    EXPECT_EQ(spoken(stop), tip());
    host.progress().endRun(RunEnd::Stopped);
    host.enableBtnRun(true);
    host.RefreshRunButtons();
  };
  click("btnRun");
  EXPECT_TRUE(QTest::qWaitFor([&] { return tip().empty(); })) << tip();
  EXPECT_EQ(stop.toolTip(), tipOfStop);
  const std::string end = ask(list);
  EXPECT_THAT(end,
              testing::AllOf(testing::StartsWith("上次导出于 "),
                             testing::HasSubstr(" 按“停止”停下：\n已导出 1 批，1 件，0 页，用时 "),
                             testing::EndsWith(tipOfList.toStdString())));
  EXPECT_EQ(spoken(view), end);

  // The next run queries the table again.
  setWaiting(2);
  QToolTip::hideText();
  EXPECT_TRUE(QTest::qWaitFor([&] { return tip().empty(); }));
  run = [&](RunHost& host) {
    host.enableBtnRun(false);
    host.RefreshRunButtons();
    host.progress().beginRun();
    host.progress().beginBatch(L"B3", 9);
    host.progress().endBatch(true);  // as many attempts as in the run before
    host.progress().beginBatch(L"B4", 9);
    click("btnStop");
    EXPECT_THAT(tip(), testing::HasSubstr("还有 1 批等待导出\n"));
    host.progress().endRun(RunEnd::Done);
  };
  click("btnRun");
}

TEST(ScreenFit, TheWholeWindowIsVisibleWheneverPossible) {
  const QSize design(933, 645);
  for (const QSize screen : {QSize(1920, 1080), QSize(1366, 768), QSize(1366, 681)}) {
    EXPECT_EQ(fittingScale(design, screen, 1), 1) << screen.width();
    EXPECT_LT(fittingScale(design, screen / 2, 2), 1) << screen.width();
  }
  for (const QSize screen : {QSize(911, 512), QSize(683, 384), QSize(800, 2000)}) {
    const double scale = fittingScale(design, screen, 4);
    EXPECT_GT(scale, 0.5);
    EXPECT_LE(design.width() * scale, screen.width());
    EXPECT_LE(design.height() * scale + 20, screen.height());
  }
  // The scale is never below one dot per pixel, even if the screen is too small for that.
  EXPECT_EQ(fittingScale(design, QSize(800, 600), 1), 1);
  EXPECT_EQ(fittingScale(design, QSize(400, 300), 2), 0.5);
}

}  // namespace
}  // namespace orvane::test
