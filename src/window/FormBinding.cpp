#include "window/FormBinding.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSignalBlocker>
#include <utility>

#include "window/controls.h"
#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr std::pair<OptionGroup, const char*> kOptionGroups[] = {
    {OptionGroup::SaveFileType, "optSaveFileType"},
    {OptionGroup::MutiPage, "optMutiPage"},
    {OptionGroup::CompressionType, "optCompressionType"},
    {OptionGroup::CompressionRatios, "optCompressionRatios"}};

constexpr std::pair<CheckBox, const char*> kCheckBoxes[] = {
    {CheckBox::CreateBatchFolder, "chkCreateBatchFolder"},
    {CheckBox::CreateDocFolder, "chkCreateDocFolder"}};

constexpr std::pair<TextBox, const char*> kTextBoxes[] = {
    {TextBox::Sp1, "txtSp1"}, {TextBox::Sp2, "txtSp2"}, {TextBox::LiuShui, "txtLiuShui"}};

// Calls `visit(group, button number, widget)` for each option button.
void forEachOption(const QWidget& window, const auto& visit) {
  for (const auto& [group, name] : kOptionGroups) {
    for (int i = 0; i < kOptionButtons[static_cast<std::size_t>(group)]; ++i) {
      visit(group, i, control<QRadioButton>(window, QStringLiteral("%1_%2").arg(name).arg(i)));
    }
  }
}

// The button of an exclusive group cannot be cleared. Tab stops at the selected button of a group;
// the arrow keys move within the group.
void setOption(QRadioButton& button, bool on, bool isTabStop) {
  const QSignalBlocker blocker(button);
  button.group()->setExclusive(false);
  button.setChecked(on);
  button.group()->setExclusive(true);
  button.setFocusPolicy(isTabStop ? Qt::StrongFocus : Qt::ClickFocus);
}

}  // namespace

FormBinding::FormBinding(QWidget& window, ExportForm& form, std::function<void()> changed)
    : window_(window), form_(form), changed_(std::move(changed)) {
  connectOptions();
  connectTexts();
}

// Without explicit groups, Qt would treat the buttons of a frame and of a frame inside it as one
// group.
void FormBinding::connectOptions() {
  QButtonGroup* buttons = nullptr;
  forEachOption(window_, [&](OptionGroup group, int i, QRadioButton& button) {
    if (i == 0) buttons = new QButtonGroup(&window_);
    buttons->addButton(&button);
    QObject::connect(&button, &QRadioButton::clicked, &window_, [this, group, i] {
      form_.clickButton(group, i);
      show();
    });
  });
  for (const auto& [box, name] : kCheckBoxes) {
    QObject::connect(&control<QCheckBox>(window_, name), &QCheckBox::clicked, &window_,
                     [this, checkBox = box](bool checked) {
                       form_.setChecked(checkBox, checked);
                       changed_();
                     });
  }
  QObject::connect(&control<QComboBox>(window_, "cboRenameType"), &QComboBox::activated, &window_,
                   [this](int entry) {
                     form_.selectRenameType(entry);
                     changed_();
                   });
}

void FormBinding::connectTexts() {
  for (const auto& [box, name] : kTextBoxes) {
    QObject::connect(&control<QLineEdit>(window_, name), &QLineEdit::textChanged, &window_,
                     [this, textBox = box](const QString& text) {
                       form_.setText(textBox, fromQt(text));
                       changed_();
                     });
  }
}

void FormBinding::show() {
  showOptions();
  showTexts();
  showRenameTypes();
  for (int frame = 1; frame <= kOptionFrames; ++frame) {
    control<QWidget>(window_, QStringLiteral("Frame%1").arg(frame))
        .setEnabled(form_.isFrameEnabled(frame));
  }
  changed_();
}

void FormBinding::showOptions() {
  forEachOption(window_, [this](OptionGroup group, int i, QRadioButton& button) {
    const int selected = form_.selectedButton(group);
    setOption(button, selected == i, selected == i || selected < 0);
  });
  for (const auto& [box, name] : kCheckBoxes) {
    control<QCheckBox>(window_, name).setChecked(form_.isChecked(box));
  }
}

void FormBinding::showTexts() {
  for (const auto& [box, name] : kTextBoxes) {
    QLineEdit& edit = control<QLineEdit>(window_, name);
    const QSignalBlocker blocker(edit);
    if (const QString text = toQt(form_.text(box)); edit.text() != text) edit.setText(text);
  }
  QPlainTextEdit& savePath = control<QPlainTextEdit>(window_, "txtSavePath");
  const QString text = toQt(form_.text(TextBox::SavePath));
  if (savePath.toPlainText() != text) savePath.setPlainText(text);
}

void FormBinding::showRenameTypes() {
  QComboBox& list = control<QComboBox>(window_, "cboRenameType");
  list.clear();
  for (const std::wstring& entry : form_.renameTypes()) list.addItem(toQt(entry));
  list.setCurrentIndex(form_.selectedRenameType());
}

}  // namespace orvane
