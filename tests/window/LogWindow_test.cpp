#include "window/LogWindow.h"

#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include "Station.h"
#include "foundation/log_files.h"
#include "foundation/mdlFolderAndFile.h"

namespace orvane::test {
namespace {

class LogWindowTest : public Station {
 protected:
  LogWindowTest() {
    window.resize(933, 645);
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window)) throw std::runtime_error("no active window");
  }
  /// Presses a key of the main window and returns the window that it opens.
  LogWindow& open(const char* key) {
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &window; }));
    QTest::keySequence(&window, QKeySequence(key));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() != &window; }));
    return dynamic_cast<LogWindow&>(*QApplication::activeWindow());
  }
  static std::string textOf(const LogWindow& log) {
    return log.findChild<QPlainTextEdit*>()->toPlainText().toStdString();
  }
  static std::string captionsOf(const LogWindow& log) {
    const auto& names = *log.findChild<QComboBox*>();
    std::string captions;
    for (int i = 0; i < names.count(); ++i) captions += names.itemText(i).toStdString() + "|";
    return captions;
  }
  /// True if the last line of text is shown completely.
  static bool showsTheEnd(const LogWindow& log) {
    const auto& text = *log.findChild<QPlainTextEdit*>();
    QTextCursor end = text.textCursor();
    end.movePosition(QTextCursor::End);
    return text.viewport()->rect().contains(text.cursorRect(end)) &&
           text.verticalScrollBar()->maximum() > 0;
  }
};

TEST_F(LogWindowTest, TheNewestEntryIsShownAlsoAfterTheWindowWasMadeSmaller) {
  for (int i = 0; i < 59; ++i) {
    mdlFolderAndFile::LogWrite(std::wstring(200, L'长') + std::to_wstring(i), L"来源");
  }
  LogWindow& log = open("Ctrl+L");
  EXPECT_FALSE(log.isModal());
  EXPECT_THAT(textOf(log), testing::EndsWith("长58\n"));
  EXPECT_TRUE(showsTheEnd(log));
  for (const QSize size : {QSize(350, 250), QSize(900, 600)}) {
    log.resize(size);
    EXPECT_TRUE(QTest::qWaitFor([&] { return showsTheEnd(log); })) << size.width();
  }
  mdlFolderAndFile::LogWrite(L"失败：磁盘满", L"来源");
  QTest::keySequence(&log, QKeySequence("F5"));
  EXPECT_THAT(textOf(log), testing::EndsWith(" - 来源:失败：磁盘满\n"));
  EXPECT_TRUE(showsTheEnd(log));
  EXPECT_TRUE(log.findChild<QPlainTextEdit*>()->isReadOnly());
  QTest::keySequence(&log, QKeySequence("Esc"));
  EXPECT_FALSE(log.isVisible());
  EXPECT_EQ(services.takeBoxes(), "") << "a box would block a run";
}

TEST_F(LogWindowTest, OlderLogsAndTheReportsCanBeSelected) {
  EXPECT_EQ(textOf(open("Ctrl+T")), "还没有导出清单。");
  EXPECT_EQ(textOf(open("Ctrl+L")), "今天还没有日志。");
  folder.shell("mkdir Log; echo 昨天的 | iconv -t GBK >Log/20240301.log; echo >Log/20231231.log");
  LogWindow& log = open("Ctrl+L");
  const std::string today = outputOf("printf %s $(date +%Y-%m-%d)") + "（今天）|";
  EXPECT_EQ(captionsOf(log), today + "2024-03-01|2023-12-31|");
  QTest::keyClick(log.findChild<QComboBox*>(), Qt::Key_Down);
  EXPECT_EQ(textOf(log), "昨天的\n");
  EXPECT_EQ(log.windowTitle().toStdString(), "日志 20240301.log（按 F5 刷新）");
  QTest::keySequence(&log, QKeySequence("F5"));
  EXPECT_EQ(textOf(log), "昨天的\n") << "the file stays selected";

  folder.write("Log/20240301-220005.txt", "档案\t页数\r\n一个比制表位宽的档案名称\t3\r\n");
  folder.write("Log/20240302-090000.txt", "档案\t页数\r\n");
  LogWindow& reports = open("Ctrl+T");
  EXPECT_EQ(captionsOf(reports), "2024-03-02 09:00:00|2024-03-01 22:00:05|");
  QTest::keyClick(reports.findChild<QComboBox*>(), Qt::Key_Down);
  EXPECT_EQ(textOf(reports), "档案\t页数\n一个比制表位宽的档案名称\t3\n");
  auto& text = *reports.findChild<QPlainTextEdit*>();
  QTextCursor cursor(text.document()->findBlockByNumber(0));
  const auto columnOf = [&](int line) {
    cursor.setPosition(text.document()->findBlockByNumber(line).position());
    while (!cursor.atBlockEnd() && text.document()->characterAt(cursor.position()) != u'\t') {
      cursor.movePosition(QTextCursor::NextCharacter);
    }
    cursor.movePosition(QTextCursor::NextCharacter);
    return text.cursorRect(cursor).left();
  };
  EXPECT_EQ(columnOf(0), columnOf(1)) << "the second column begins at one place";
  folder.shell("rm -r Log; touch Log");
  QTest::keySequence(&reports, QKeySequence("F5"));
  EXPECT_THAT(textOf(reports), testing::HasSubstr("Not a directory"));
}

}  // namespace
}  // namespace orvane::test
