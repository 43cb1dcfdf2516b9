#pragma once

#include <QComboBox>
#include <QObject>
#include <array>
#include <string>

#include "export/OutputPreview.h"

namespace orvane {

/// Shows the preview at the front of the tool tips of `cboRenameType` and `btnRun`, which a screen
/// reader reads too, and the example names in the drop-down list. The disk of the output folder is
/// examined when the operator comes to one of the two controls, by pointer or keyboard. It may be
/// unreachable, and then the start of the program must not wait for it.
class NamingPreview : public QObject {
 public:
  /// All parameters must outlive the preview.
  NamingPreview(QComboBox& cboRenameType, QWidget& btnRun, const ExportForm& form);

  /// Must be called after every change of the form.
  void update();

  /// Examines the disk of the output folder and updates the preview.
  void examineDisk();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Tip {
    QWidget* control;
    QString constant;  ///< the text that does not depend on the options
  };

  QComboBox& cboRenameType_;
  const ExportForm& form_;
  std::array<Tip, 2> tips_;
  OutputDisk disk_;
  std::wstring examined_;  ///< the folder that `disk_` belongs to
};

}  // namespace orvane
