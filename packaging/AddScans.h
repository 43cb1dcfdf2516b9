#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <string>

#include "batchdb/BatchStore.h"
#include "intake/IntakePlan.h"
#include "intake/NewBatch.h"

namespace orvane {

/// Shows what would become of a folder of scans, and makes a waiting batch of it when the operator
/// agrees. The work can be cancelled; nothing remains of it then.
class AddScans : public QDialog {
 public:
  /// @param store   of the station, which must be the program folder.
  /// @param folder  a path text.
  AddScans(BatchStore& store, std::wstring folder);

  /// During the work this cancels it, otherwise it closes the dialog.
  void reject() override;

 private:
  void layOut();
  void plan();
  void work();
  void show(const IntakeProgress& done);
  void say(const std::wstring& line);

  BatchStore& store_;
  const std::wstring folder_;
  IntakePlan plan_;
  bool isWorking_ = false, isCancelled_ = false;

  QLineEdit* name_;
  QPlainTextEdit* text_;
  QProgressBar* progress_;
  QPushButton *accept_, *close_;
};

}  // namespace orvane
