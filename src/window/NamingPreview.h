#pragma once

#include <QComboBox>
#include <array>
#include <string>

#include "settings/ExportForm.h"

namespace orvane {

/// The file that page 2 of a sample document would become under the options as they stand, found
/// by the naming functions of the export itself. Lines that begin with "⚠" follow, each with a line
/// end, where no pattern is selected or files can replace each other.
std::wstring namingPreview(const ExportForm& form);

/// The name of that file under another pattern, with "⚠" after it where files can replace each
/// other; empty when the options give none.
std::wstring exampleName(const ExportForm& form, const std::wstring& pattern);

/// Shows the preview in front of the tool tips of `cboRenameType` and `btnRun`, where a screen
/// reader finds it too, and the example names in the opened list.
class NamingPreview {
 public:
  /// All must outlive the preview.
  NamingPreview(QComboBox& cboRenameType, QWidget& btnRun, const ExportForm& form);

  /// To be called after every change of the form.
  void update();

 private:
  struct Tip {
    QWidget* control;
    QString constant;  ///< what does not depend on the options
  };

  QComboBox& cboRenameType_;
  const ExportForm& form_;
  std::array<Tip, 2> tips_;
};

}  // namespace orvane
