#pragma once

#include <QAccessible>
#include <QObject>
#include <QTimer>
#include <QWidget>
#include <array>
#include <optional>

#include "batchdb/mdlDataBase.h"
#include "export/RunHost.h"

namespace orvane {

/// During a run, the tool tips of the list and of `btnStop` show its progress and acknowledge a
/// stop; after it, the tip of the list tells how it ended. They are updated while they are shown.
/// The accessible descriptions, which are the tool tips, follow the run if there is a screen
/// reader. It is told of the change once a minute, at a stop, at the end, and when the operator
/// asks. The waiting batches are queried when a tip appears and again after each batch.
class RunTips : public QObject, private QAccessible::ActivationObserver {
 public:
  /// All parameters must outlive this object.
  RunTips(QWidget& listProcessLog, QWidget& btnStop, RunHost& host);
  ~RunTips() override;
  RunTips(const RunTips&) = delete;
  RunTips& operator=(const RunTips&) = delete;

  /// Must be called before and after each run.
  void beginRun();
  void endRun();

  /// Shows at once that the stop was received.
  void acknowledgeStop();

  /// Shows the tip of the list, or hides it if it is shown.
  void toggleProgress();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Tip {
    QWidget* control;
    QString constant;  ///< the text without a run
  };

  void accessibilityActiveChanged(bool active) override { hasScreenReader_ = active; }
  const Tip& ofList() const { return tips_.front(); }
  const Tip& ofStop() const { return tips_.back(); }
  QString textOf(const Tip& tip);
  void answer(const Tip& tip, const QPoint& place);
  void show(const Tip& tip, const QPoint& place);
  bool isShown() const;
  void hide();
  void refresh();
  static void tellScreenReader(const Tip& tip);

  RunHost& host_;
  std::array<Tip, 2> tips_;  // of the list and of `btnStop`
  QTimer timer_;             // active during a run
  int ticks_ = 0;            // of the timer
  bool hasScreenReader_ = QAccessible::isActive();
  const Tip* shown_ = nullptr;
  QPoint place_;  // in screen coordinates

  std::optional<WaitingBatches> waiting_;
  std::optional<std::int64_t> askedAfter_;  // RunProgress::attempts() at the time of the query
};

}  // namespace orvane
