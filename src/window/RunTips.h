#pragma once

#include <QObject>
#include <QTimer>
#include <QWidget>
#include <array>
#include <optional>

#include "batchdb/mdlDataBase.h"
#include "export/RunHost.h"

namespace orvane {

/// While a run goes on, the tool tips of the list and of `btnStop` tell how far it is, and that a
/// stop was heard, and are kept up to date as long as they are shown. The table is asked for
/// what waits when a tip comes up, and again after each batch.
class RunTips : public QObject {
 public:
  /// All must outlive this object.
  RunTips(QWidget& listProcessLog, QWidget& btnStop, RunHost& host);

  /// Shows at once that a stop was heard.
  void acknowledgeStop();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Tip {
    QWidget* control;
    QString constant;  ///< what it says while nothing runs
  };

  QString textOf(const Tip& tip);
  void show(const Tip& tip, const QPoint& place);
  void refresh();

  RunHost& host_;
  std::array<Tip, 2> tips_;  // of the list, of `btnStop`
  QTimer timer_;             // runs while one of them is shown
  const Tip* shown_ = nullptr;
  QPoint place_;  // on the screen

  std::optional<WaitingBatches> waiting_;
  std::optional<std::int64_t> askedAfter_;  // the attempts that were over when the table was asked
};

}  // namespace orvane
