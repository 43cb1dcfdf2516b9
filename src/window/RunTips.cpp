#include "window/RunTips.h"

#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr int kRefreshMs = 1000;

// Names from the table must not be interpreted as mark-up.
QString asTip(const QString& text) {
  return Qt::mightBeRichText(text) ? wrappedTip(text) : text;
}

}  // namespace

RunTips::RunTips(QWidget& listProcessLog, QWidget& btnStop, RunHost& host)
    : host_(host),
      tips_{Tip{&listProcessLog, listProcessLog.toolTip()}, Tip{&btnStop, btnStop.toolTip()}} {
  for (const Tip& tip : tips_) tip.control->installEventFilter(this);
  timer_.setInterval(kRefreshMs);
  timer_.callOnTimeout(this, [this] { refresh(); });
}

bool RunTips::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ToolTip && host_.progress().isRunning()) {
    for (const Tip& tip : tips_) {
      if (tip.control != watched) continue;
      askedAfter_.reset();
      show(tip, static_cast<QHelpEvent*>(event)->globalPos());
      return true;
    }
  }
  return QObject::eventFilter(watched, event);
}

void RunTips::acknowledgeStop() {
  const Tip& tip = tips_.back();
  if (!host_.progress().isRunning() || !tip.control->isVisible()) return;
  show(tip, tip.control->mapToGlobal(tip.control->rect().bottomLeft()));
}

QString RunTips::textOf(const Tip& tip) {
  const RunProgress& progress = host_.progress();
  if (!waiting_ || askedAfter_ != progress.attempts()) {
    waiting_ = mdlDataBase::waitingBatches();
    askedAfter_ = progress.attempts();
  }
  const bool isStopRequested = host_.IsStopRequested();
  const QString text = toQt(progress.text(waiting_, isStopRequested)).trimmed();
  if (isStopRequested) return asTip(QStringLiteral("已收到停止，这一批做完就停下来。\n") + text);
  return asTip(&tip == &tips_.back() ? text + u'\n' + tip.constant : text);
}

void RunTips::show(const Tip& tip, const QPoint& place) {
  shown_ = &tip;
  place_ = place;
  tip.control->setToolTip(textOf(tip));
  QToolTip::showText(place, tip.control->toolTip(), tip.control);
  timer_.start();
}

void RunTips::refresh() {
  const bool isShown = QToolTip::isVisible() && QToolTip::text() == shown_->control->toolTip();
  if (isShown && host_.progress().isRunning()) return show(*shown_, place_);
  if (isShown) QToolTip::hideText();
  for (const Tip& tip : tips_) tip.control->setToolTip(tip.constant);
  timer_.stop();
}

}  // namespace orvane
