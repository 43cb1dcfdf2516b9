#include "window/LogWindow.h"

#include <QShortcut>
#include <QSignalBlocker>
#include <QTextBlock>
#include <QTextDocument>
#include <QVBoxLayout>
#include <algorithm>

#include "foundation/Failure.h"
#include "foundation/log_files.h"
#include "foundation/mdlFolderAndFile.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr std::size_t kMostOfFile = 1U << 20;  // bytes
constexpr int kColumnGap = 16;                 // pixels

/// A text that stays at its end when its size changes, because the lines are wrapped again.
class EndOfText : public QPlainTextEdit {
 public:
  using QPlainTextEdit::QPlainTextEdit;

 protected:
  void resizeEvent(QResizeEvent* event) override {
    QPlainTextEdit::resizeEvent(event);
    if (textCursor().atEnd()) ensureCursorVisible();
  }
};

QString titleOf(LogWindow::Kind kind) {
  return kind == LogWindow::Kind::Logs ? QStringLiteral("日志") : QStringLiteral("导出清单");
}

std::wstring nameOf(const std::wstring& file) {
  return file.substr(file.find_last_of(L'\\') + 1);
}

// "20240301-220005.txt" becomes "2024-03-01 22:00:05".
QString captionOf(const std::wstring& file) {
  QString caption = toQt(nameOf(file)).chopped(4);
  for (const int place : {4, 7}) caption.insert(place, u'-');
  if (caption.size() > 10) {
    caption[10] = u' ';
    for (const int place : {13, 16}) caption.insert(place, u':');
  }
  return file == logFileOfToday() ? caption + QStringLiteral("（今天）") : caption;
}

// Today's log is listed even if it does not exist yet.
std::vector<std::wstring> filesOf(LogWindow::Kind kind) {
  if (kind == LogWindow::Kind::Reports) return runReports();
  std::vector<std::wstring> files = dailyLogs();
  const std::wstring today = logFileOfToday();
  if (std::ranges::find(files, today) == files.end()) files.insert(files.begin(), today);
  return files;
}

QString textOf(const std::wstring& file) {
  try {
    if (file.empty()) return QStringLiteral("还没有导出清单。");
    if (!mdlFolderAndFile::fileSystem().FileExists(file)) return QStringLiteral("今天还没有日志。");
    return toQt(readLogFile(file, kMostOfFile));
  } catch (const std::exception& failure) {
    return QStringLiteral("读不出来：") + toQt(description(failure));
  }
}

// The columns of a report are separated by tabs. Each gets the width of its longest cell.
void alignColumns(QPlainTextEdit& text) {
  const QFontMetrics metrics = text.fontMetrics();
  std::vector<int> widths;
  for (QTextBlock line = text.document()->begin(); line.isValid(); line = line.next()) {
    const QStringList cells = line.text().split(u'\t');
    widths.resize(std::max(widths.size(), static_cast<std::size_t>(cells.size())));
    for (qsizetype i = 0; i + 1 < cells.size(); ++i) {  // nothing comes after the last cell
      int& width = widths[static_cast<std::size_t>(i)];
      width = std::max(width, metrics.horizontalAdvance(cells[i]));
    }
  }
  QTextOption option = text.document()->defaultTextOption();
  QList<QTextOption::Tab> stops;
  int place = 0;
  for (const int width : widths) {
    place += width + kColumnGap;
    stops += QTextOption::Tab(place, QTextOption::LeftTab);
  }
  option.setTabs(stops);
  text.document()->setDefaultTextOption(option);
}

}  // namespace

LogWindow::LogWindow(QWidget& owner, Kind kind)
    : QDialog(&owner), kind_(kind), names_(new QComboBox), text_(new EndOfText) {
  resize(owner.size() * 0.8);
  names_->setAccessibleName(titleOf(kind));
  text_->setAccessibleName(titleOf(kind));
  text_->setReadOnly(true);
  if (kind == Kind::Reports) text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  auto* column = new QVBoxLayout(this);
  column->addWidget(names_);
  column->addWidget(text_);
  text_->setFocus();
  connect(names_, &QComboBox::currentIndexChanged, this, &LogWindow::showFile);
  connect(new QShortcut(QKeySequence(Qt::Key_F5), this), &QShortcut::activated, this,
          [this] { listFiles(selectedFile()); });
}

void LogWindow::open(QWidget& owner, Kind kind) {
  const QString name = kind == Kind::Logs ? QStringLiteral("logs") : QStringLiteral("reports");
  auto* window = dynamic_cast<LogWindow*>(owner.findChild<QDialog*>(name));
  if (window == nullptr) {
    window = new LogWindow(owner, kind);
    window->setObjectName(name);
  }
  window->listFiles({});
  window->show();
  window->raise();
  window->activateWindow();
}

void LogWindow::listFiles(const std::wstring& file) {
  try {
    files_ = filesOf(kind_);
    failure_.clear();
  } catch (const std::exception& failure) {
    files_.clear();
    failure_ = QStringLiteral("读不出来：") + toQt(description(failure));
  }
  const QSignalBlocker blocker(names_);
  names_->clear();
  for (const std::wstring& listed : files_) names_->addItem(captionOf(listed));
  const auto place = std::ranges::find(files_, file);
  if (place != files_.end()) names_->setCurrentIndex(static_cast<int>(place - files_.begin()));
  showFile();
}

std::wstring LogWindow::selectedFile() const {
  const int row = names_->currentIndex();
  return row < 0 ? std::wstring() : files_[static_cast<std::size_t>(row)];
}

void LogWindow::showFile() {
  const std::wstring file = selectedFile();
  setWindowTitle(titleOf(kind_) + u' ' + toQt(nameOf(file)) + QStringLiteral("（按 F5 刷新）"));
  text_->setPlainText(failure_.isEmpty() ? textOf(file) : failure_);
  if (kind_ == Kind::Reports) alignColumns(*text_);
  text_->moveCursor(QTextCursor::End);
}

}  // namespace orvane
