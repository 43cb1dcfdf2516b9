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

struct OptionButton {
  OptionGroup group;
  int number;
  ControlName<QRadioButton> name;
};

constexpr OptionButton kOptions[] = {{OptionGroup::SaveFileType, 0, "optSaveFileType_0"},
                                     {OptionGroup::SaveFileType, 1, "optSaveFileType_1"},
                                     {OptionGroup::SaveFileType, 2, "optSaveFileType_2"},
                                     {OptionGroup::MutiPage, 0, "optMutiPage_0"},
                                     {OptionGroup::MutiPage, 1, "optMutiPage_1"},
                                     {OptionGroup::CompressionType, 0, "optCompressionType_0"},
                                     {OptionGroup::CompressionType, 1, "optCompressionType_1"},
                                     {OptionGroup::CompressionRatios, 0, "optCompressionRatios_0"},
                                     {OptionGroup::CompressionRatios, 1, "optCompressionRatios_1"},
                                     {OptionGroup::CompressionRatios, 2, "optCompressionRatios_2"}};

constexpr struct {
  CheckBox box;
  ControlName<QCheckBox> name;
} kCheckBoxes[] = {{CheckBox::CreateBatchFolder, "chkCreateBatchFolder"},
                   {CheckBox::CreateDocFolder, "chkCreateDocFolder"}};

constexpr struct {
  TextBox box;
  ControlName<QLineEdit> name;
} kTextBoxes[] = {
    {TextBox::Sp1, "txtSp1"}, {TextBox::Sp2, "txtSp2"}, {TextBox::LiuShui, "txtLiuShui"}};

constexpr ControlName<QWidget> kFrames[kOptionFrames] = {"Frame1", "Frame2", "Frame3",
                                                         "Frame4", "Frame5", "Frame6"};

// Calls `visit(group, button number, widget)` for each option button.
void forEachOption(const QWidget& window, const auto& visit) {
  for (const auto& [group, number, name] : kOptions) visit(group, number, control(window, name));
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
    QObject::connect(&control(window_, name), &QCheckBox::clicked, &window_,
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
    QObject::connect(&control(window_, name), &QLineEdit::textChanged, &window_,
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
    control(window_, kFrames[frame - 1]).setEnabled(form_.isFrameEnabled(frame));
  }
  changed_();
}

void FormBinding::showOptions() {
  forEachOption(window_, [this](OptionGroup group, int i, QRadioButton& button) {
    const int selected = form_.selectedButton(group);
    setOption(button, selected == i, selected == i || selected < 0);
  });
  for (const auto& [box, name] : kCheckBoxes) {
    control(window_, name).setChecked(form_.isChecked(box));
  }
}

void FormBinding::showTexts() {
  for (const auto& [box, name] : kTextBoxes) {
    QLineEdit& edit = control(window_, name);
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
