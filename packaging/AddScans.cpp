#include "AddScans.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/WindowServices.h"
#include "foundation/program.h"
#include "window/qt_text.h"

namespace orvane {
AddScans::AddScans(BatchStore& store, std::wstring folder)
    : store_(store),
      folder_(std::move(folder)),
      name_(new QLineEdit(toQt(nameOfFolder(folder_)))),
      text_(new QPlainTextEdit),
      progress_(new QProgressBar),
      accept_(new QPushButton(QStringLiteral("登记(&R)"))),
      close_(new QPushButton(QStringLiteral("取消(&C)"))) {
  layOut();
  connect(name_, &QLineEdit::editingFinished, this, [this] { plan(); });
  connect(accept_, &QPushButton::clicked, this, [this] { work(); });
  connect(close_, &QPushButton::clicked, this, &QDialog::reject);
  plan();
}

void AddScans::layOut() {
  setWindowTitle(QStringLiteral("登记扫描件"));
  resize(640, 420);
  text_->setReadOnly(true);
  text_->setAccessibleName(QStringLiteral("将要登记的内容"));
  progress_->hide();
  accept_->setAutoDefault(false);  // Enter in the name only ends its editing
  close_->setAutoDefault(false);

  auto* form = new QFormLayout;
  auto* folder = new QLabel(toQt(folder_));
  folder->setTextFormat(Qt::PlainText);
  form->addRow(QStringLiteral("文件夹："), folder);
  form->addRow(QStringLiteral("档案名称(&N)："), name_);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(progress_, 1);
  buttons->addStretch();
  buttons->addWidget(accept_);
  buttons->addWidget(close_);
  auto* column = new QVBoxLayout(this);
  column->addLayout(form);
  column->addWidget(text_);
  column->addLayout(buttons);
}

void AddScans::plan() {
  const BusyPointer busy;
  text_->clear();
  accept_->setEnabled(false);
  try {
    plan_ = planIntake(store_, folder_, fromQt(name_->text()));
    for (const std::wstring& line : linesOf(plan_)) text_->appendPlainText(toQt(line));
    accept_->setEnabled(plan_.refusals.empty());
  } catch (const std::exception& failure) {
    say(L"不能登记：" + description(failure));
  }
}

void AddScans::work() {
  isWorking_ = true;
  name_->setReadOnly(true);
  accept_->setEnabled(false);
  progress_->setRange(0, static_cast<int>(plan_.pages));
  progress_->show();
  try {
    const IntakeProgress done = carryOut(store_, plan_, timeStamp(), [this](const auto& state) {
      show(state);
      QApplication::processEvents();
      if (isCancelled_) throw Failure(L"已取消，什么也没有留下");
    });
    show(done);
    say(L"已登记：" + plan_.batch + L"（" + figures(done.documents, done.pages, done.bytes) +
        L"）。程序下一次查询时就会导出它。");
  } catch (const std::exception& failure) {
    progress_->hide();
    say(L"没有登记：" + description(failure));
  }
  isWorking_ = false;
  close_->setText(QStringLiteral("关闭(&C)"));
  close_->setFocus();
}

void AddScans::show(const IntakeProgress& done) {
  progress_->setValue(static_cast<int>(done.pages));
}

void AddScans::say(const std::wstring& line) {
  text_->appendPlainText(toQt(line));
  text_->ensureCursorVisible();
}

void AddScans::reject() {
  if (isWorking_) {
    isCancelled_ = true;
  } else {
    QDialog::reject();
  }
}

}  // namespace orvane
