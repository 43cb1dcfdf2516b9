#pragma once

#include <QWidget>
#include <functional>

#include "settings/ExportForm.h"

namespace orvane {

/// Joins the option controls of the window to the form behind them: hands the operator's actions
/// to the form, and shows the form's state in the controls. Each change is told to `changed`.
class FormBinding {
 public:
  /// Both must outlive the binding.
  FormBinding(QWidget& window, ExportForm& form, std::function<void()> changed);

  /// Brings all controls in line with the form.
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
