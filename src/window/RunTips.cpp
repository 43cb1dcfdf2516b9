#include "window/RunTips.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QTextDocument>
#include <QToolTip>

#include "window/qt_text.h"

namespace orvane {
namespace {

constexpr int kRefreshMs = 1000;
// A screen reader may read the whole text after each change.
constexpr int kTicksUntilToldAgain = 60;

// Names from the table must not be interpreted as mark-up.
QString asTip(const QString& text) {
  return Qt::mightBeRichText(text) ? wrappedTip(text) : text;
}

}  // namespace

RunTips::RunTips(QWidget& listProcessLog, QWidget& btnStop, RunHost& host)
    : host_(host),
      tips_{Tip{&listProcessLog, listProcessLog.toolTip()}, Tip{&btnStop, btnStop.toolTip()}} {
  for (const Tip& tip : tips_) tip.control->installEventFilter(this);
  listProcessLog.focusProxy()->installEventFilter(this);
  timer_.setInterval(kRefreshMs);
  timer_.callOnTimeout(this, [this] { refresh(); });
  QAccessible::installActivationObserver(this);
}

RunTips::~RunTips() {
  QAccessible::removeActivationObserver(this);
}

bool RunTips::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    for (const Tip& tip : tips_) {
      if (tip.control != watched) continue;
      answer(tip, static_cast<QHelpEvent*>(event)->globalPos());
      return true;
    }
  }
  if (event->type() == QEvent::KeyPress && watched == ofList().control->focusProxy()) {
    // A tip would cover the lines that the operator goes to.
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Control && key != Qt::Key_Shift && key != Qt::Key_Alt) hide();
  }
  return QObject::eventFilter(watched, event);
}

void RunTips::beginRun() {
  askedAfter_.reset();
  ticks_ = 0;
  timer_.start();
}

void RunTips::endRun() {
  timer_.stop();
  hide();
  for (const Tip& tip : tips_) {
    tip.control->setToolTip(textOf(tip));
    tellScreenReader(tip);
  }
}

void RunTips::acknowledgeStop() {
  if (!host_.progress().isRunning() || !ofStop().control->isVisible()) return;
  answer(ofStop(), ofStop().control->mapToGlobal(ofStop().control->rect().bottomLeft()));
}

void RunTips::toggleProgress() {
  if (isShown()) return hide();
  answer(ofList(), ofList().control->mapToGlobal(QPoint(0, 0)));
}

QString RunTips::textOf(const Tip& tip) {
  const RunProgress& progress = host_.progress();
  if (!progress.isRunning()) {
    return asTip(&tip == &ofList() ? toQt(progress.summary()) + tip.constant : tip.constant);
  }
  if (askedAfter_ != progress.attempts()) {
    waiting_ = mdlDataBase::waitingBatches();
    askedAfter_ = progress.attempts();
  }
  const bool isStopRequested = host_.IsStopRequested();
  const QString text = toQt(progress.text(waiting_, isStopRequested)).trimmed();
  if (isStopRequested) return asTip(QStringLiteral("已收到停止，这一批做完就停下来。\n") + text);
  return asTip(&tip == &ofStop() ? text + u'\n' + tip.constant : text);
}

void RunTips::answer(const Tip& tip, const QPoint& place) {
  askedAfter_.reset();
  show(tip, place);
  tellScreenReader(tip);
}

void RunTips::show(const Tip& tip, const QPoint& place) {
  shown_ = &tip;
  place_ = place;
  tip.control->setToolTip(textOf(tip));
  QToolTip::showText(place, tip.control->toolTip(), tip.control);
}

bool RunTips::isShown() const {
  return shown_ != nullptr && QToolTip::isVisible() &&
         QToolTip::text() == shown_->control->toolTip();
}

void RunTips::hide() {
  QToolTip::hideText();
  shown_ = nullptr;
}

void RunTips::refresh() {
  if (!host_.progress().isRunning()) return;
  if (isShown()) {
    show(*shown_, place_);
  } else {
    shown_ = nullptr;
  }
  if (!hasScreenReader_) return;
  const bool isTold = ticks_++ % kTicksUntilToldAgain == 0;
  for (const Tip& tip : tips_) {
    const bool isThisShown = shown_ != nullptr && tip.control == shown_->control;
    if (!isThisShown) tip.control->setToolTip(textOf(tip));
    if (isTold) tellScreenReader(tip);
  }
}

void RunTips::tellScreenReader(const Tip& tip) {
  QWidget* const spoken =
      tip.control->focusProxy() != nullptr ? tip.control->focusProxy() : tip.control;
  QAccessibleEvent told(spoken, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&told);
}

}  // namespace orvane
