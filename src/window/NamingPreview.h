#pragma once

#include <QObject>
#include <QWidget>
#include <array>
#include <string>

#include "settings/ExportForm.h"

namespace orvane {

/// What is wrong with the names under the options as they stand: lines that begin with "⚠", each
/// with a line end, where no pattern is selected or files can replace each other.
std::wstring namingWarning(const ExportForm& form);

/// The file that page 2 of a sample document would become under the options as they stand, found
/// by the naming functions of the export itself, and the warning.
std::wstring namingPreview(const ExportForm& form);

/// Puts the preview into the tool tip of `cboRenameType`, and the warning into that of `btnRun`,
/// each time that it is asked for.
class NamingPreview : public QObject {
 public:
  /// All must outlive the preview.
  NamingPreview(QWidget& cboRenameType, QWidget& btnRun, const ExportForm& form);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Tip {
    QWidget* control;
    std::wstring (*front)(const ExportForm&);  ///< what the options make of it
    QString constant;
  };

  const ExportForm& form_;
  std::array<Tip, 2> tips_;
};

}  // namespace orvane
