#pragma once

#include <QObject>
#include <QWidget>

#include "settings/ExportForm.h"

namespace orvane {

/// The file that page 2 of a sample document would become under the options as they stand, found
/// by the naming functions of the export itself; with a warning where the name would be none or
/// would not be the document's own.
std::wstring namingPreview(const ExportForm& form);

/// Puts the preview into the tool tip of `cboRenameType` each time that it is asked for.
class NamingPreview : public QObject {
 public:
  /// All must outlive the preview.
  NamingPreview(QWidget& cboRenameType, const ExportForm& form);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void show();

  QWidget& cboRenameType_;
  const ExportForm& form_;
  QString keyLine_;
};

}  // namespace orvane
