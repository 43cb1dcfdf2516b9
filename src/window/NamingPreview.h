#pragma once

#include <QComboBox>
#include <array>
#include <string>

#include "settings/ExportForm.h"

namespace orvane {

/// The output file of page 2 of a sample document under the current options, from the naming
/// functions of the export. If no pattern is selected or files can replace each other, lines that
/// begin with "⚠" follow. Every line has a line end.
std::wstring namingPreview(const ExportForm& form);

/// The name of that file under another pattern, followed by "⚠" if files can replace each other.
/// Empty if the options are invalid.
std::wstring exampleName(const ExportForm& form, const std::wstring& pattern);

/// Shows the preview at the front of the tool tips of `cboRenameType` and `btnRun`, which a screen
/// reader reads too, and the example names in the drop-down list.
class NamingPreview {
 public:
  /// All parameters must outlive the preview.
  NamingPreview(QComboBox& cboRenameType, QWidget& btnRun, const ExportForm& form);

  /// Must be called after every change of the form.
  void update();

 private:
  struct Tip {
    QWidget* control;
    QString constant;  ///< the text that does not depend on the options
  };

  QComboBox& cboRenameType_;
  const ExportForm& form_;
  std::array<Tip, 2> tips_;
};

}  // namespace orvane
