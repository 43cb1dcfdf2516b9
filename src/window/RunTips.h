#pragma once

#include <QObject>
#include <QTimer>
#include <QWidget>
#include <array>
#include <optional>

#include "batchdb/mdlDataBase.h"
#include "export/RunHost.h"

namespace orvane {

/// During a run, the tool tips of the list and of `btnStop` show its progress and acknowledge a
/// stop. They are updated while they are shown. The waiting batches are queried when a tip appears
/// and again after each batch.
class RunTips : public QObject {
 public:
  /// All parameters must outlive this object.
  RunTips(QWidget& listProcessLog, QWidget& btnStop, RunHost& host);

  /// Shows at once that the stop was received.
  void acknowledgeStop();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Tip {
    QWidget* control;
    QString constant;  ///< the text without a run
  };

  QString textOf(const Tip& tip);
  void show(const Tip& tip, const QPoint& place);
  void refresh();

  RunHost& host_;
  std::array<Tip, 2> tips_;  // of the list and of `btnStop`
  QTimer timer_;             // active while one of them is shown
  const Tip* shown_ = nullptr;
  QPoint place_;  // in screen coordinates

  std::optional<WaitingBatches> waiting_;
  std::optional<std::int64_t> askedAfter_;  // RunProgress::attempts() at the time of the query
};

}  // namespace orvane
