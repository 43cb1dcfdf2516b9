#pragma once

#include <QWidget>
#include <functional>

#include "settings/ExportForm.h"

namespace orvane {

/// Connects the option controls of the window with the form: passes the operator's actions to the
/// form and shows the form's state in the controls.
class FormBinding {
 public:
  /// `window` and `form` must outlive the binding. `changed` is called after each change.
  FormBinding(QWidget& window, ExportForm& form, std::function<void()> changed);

  /// Shows the state of the form in all controls.
  void show();

 private:
  void connectOptions();
  void connectTexts();
  void showOptions();
  void showTexts();
  void showRenameTypes();

  QWidget& window_;
  ExportForm& form_;
  std::function<void()> changed_;
};

}  // namespace orvane
