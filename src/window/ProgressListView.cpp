#include "window/ProgressListView.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <unordered_map>
#include <utility>

namespace orvane {
namespace {

constexpr auto kFrameTime = std::chrono::milliseconds(16);  // of a screen with 60 Hz
constexpr int kRowPadding = 2;
constexpr int kLinePadding = 8;

// The list as screen readers see it: a list of lines.

// Interfaces are dropped beyond this number, because a list can have a million lines. A screen
// reader asks for a lost line again.
constexpr std::size_t kMostKept = 4096;

class AccessibleLine : public QAccessibleInterface {
 public:
  AccessibleLine(ProgressListView& list, int row) : list_(&list), row_(row) {}

  int row() const { return row_; }

  bool isValid() const override { return list_ && index().isValid(); }
  QObject* object() const override { return nullptr; }
  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(list_);
  }
  QWindow* window() const override { return parent()->window(); }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }

  QAccessible::Role role() const override { return QAccessible::ListItem; }
  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Name) return index().data().toString();
    if (kind != QAccessible::Description) return {};
    return index().data(Qt::AccessibleDescriptionRole).toString();  // why a line failed
  }
  void setText(QAccessible::Text, const QString&) override {}

  QRect rect() const override {
    const QRect place = list_->visualRect(index());
    return {list_->viewport()->mapToGlobal(place.topLeft()), place.size()};
  }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.selectable = true;
    state.focusable = true;
    state.selected = list_->selectionModel()->isSelected(index());
    state.focused = list_->hasFocus() && list_->currentIndex() == index();
    state.offscreen = !list_->viewport()->rect().intersects(list_->visualRect(index()));
    return state;
  }

 private:
  QModelIndex index() const { return list_->model()->index(row_, 0); }

  QPointer<ProgressListView> list_;
  int row_;
};

class AccessibleList : public QAccessibleWidget {
 public:
  explicit AccessibleList(ProgressListView& list)
      : QAccessibleWidget(&list, QAccessible::List), list_(list) {}
  ~AccessibleList() override { forgetLines(); }

  int childCount() const override { return list_.model()->rowCount(); }
  QAccessibleInterface* child(int row) const override {
    if (row < 0 || row >= childCount()) return nullptr;
    if (lines_.size() >= kMostKept) forgetLines();
    const auto [line, isNew] = lines_.try_emplace(row);
    if (isNew) {
      auto accessible = std::make_unique<AccessibleLine>(list_, row);
      // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): Qt deletes a registered interface
      line->second = QAccessible::registerAccessibleInterface(accessible.release());
    }
    return QAccessible::accessibleInterface(line->second);
  }
  QAccessibleInterface* childAt(int x, int y) const override {
    return child(list_.indexAt(list_.viewport()->mapFromGlobal(QPoint(x, y))).row());
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    const auto* line = dynamic_cast<const AccessibleLine*>(child);
    return line == nullptr ? -1 : line->row();
  }
  QAccessibleInterface* focusChild() const override {
    return list_.hasFocus() ? child(list_.currentIndex().row()) : nullptr;
  }

  // The tool tip belongs to the ProgressListBox around the list.
  QString text(QAccessible::Text kind) const override {
    if (kind != QAccessible::Description) return QAccessibleWidget::text(kind);
    return list_.parentWidget()->toolTip();
  }

 private:
  void forgetLines() const {
    for (const auto& [row, line] : lines_) QAccessible::deleteAccessibleInterface(line);
    lines_.clear();
  }

  ProgressListView& list_;
  mutable std::unordered_map<int, QAccessible::Id> lines_;  ///< by row; only those requested
};

// A factory for `QAccessible::installFactory`. Qt's own factory supports only the views of Qt.
QAccessibleInterface* accessibleLines(const QString&, QObject* object) {
  auto* const list = dynamic_cast<ProgressListView*>(object);
  return list == nullptr ? nullptr : new AccessibleList(*list);
}

}  // namespace

ProgressListView::ProgressListView(QWidget* parent) : QAbstractItemView(parent) {
  setModel(&lines_);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setTextElideMode(Qt::ElideNone);
  untilNextFrame_.setSingleShot(true);
  untilNextFrame_.callOnTimeout(this, [this] { showNewLines(); });
  QAccessible::installFactory(accessibleLines);
}

void ProgressListView::addItemWithReason(std::wstring_view line, std::wstring_view reason) {
  if (lines_.add(line, reason)) {
    const int width = fontMetrics().horizontalAdvance(
        QString::fromWCharArray(line.data(), static_cast<qsizetype>(line.size())));
    widestLine_ = std::max(widestLine_, width + kLinePadding);
  }
  if (!untilNextFrame_.isActive()) showNewLines();
  notifyScreenReader(QAccessible::ObjectCreated, lines_.rowCount() - 1);
}

void ProgressListView::clear() {
  lines_.clear();
  widestLine_ = 0;
  linesShown_ = 0;
  updateScrollBars();
}

void ProgressListView::showNewLines() {
  if (linesShown_ == lines_.rowCount()) return;
  updateScrollBars();
  QRect added = visualRect(lines_.index(linesShown_, 0));
  added.setBottom(viewport()->height());
  viewport()->update(added);
  linesShown_ = lines_.rowCount();
}

void ProgressListView::refresh() {
  untilNextFrame_.stop();
  showNewLines();
  QEvent request(QEvent::UpdateRequest);  // draws what has changed
  QApplication::sendEvent(window(), &request);
}

void ProgressListView::refreshInTime() {
  if (!untilNextFrame_.isActive()) drawFrame();
}

void ProgressListView::refreshNow() {
  if (linesShown_ < lines_.rowCount()) drawFrame();
}

void ProgressListView::drawFrame() {
  refresh();
  untilNextFrame_.start(kFrameTime);
}

// To move it again and again would cost more than to draw it.
void ProgressListView::scrollContentsBy(int dx, int dy) {
  if (std::exchange(isMoved_, true)) {
    viewport()->update();
  } else {
    viewport()->scroll(dx, dy * rowHeight());
  }
}

int ProgressListView::rowHeight() const {
  return fontMetrics().height() + kRowPadding;
}

int ProgressListView::rowsPerPage() const {
  return std::max(1, viewport()->height() / rowHeight());
}

int ProgressListView::rowAt(int y) const {
  return static_cast<int>(std::floor(double(y + verticalOffset()) / rowHeight()));
}

void ProgressListView::updateScrollBars() {
  QScrollBar& vertical = *verticalScrollBar();
  const bool showsNewestLine = vertical.value() == vertical.maximum();
  vertical.setRange(0, std::max(0, lines_.rowCount() - rowsPerPage()));
  vertical.setPageStep(rowsPerPage());
  if (showsNewestLine) vertical.setValue(vertical.maximum());

  QScrollBar& horizontal = *horizontalScrollBar();
  horizontal.setRange(0, std::max(0, widestLine_ - viewport()->width()));
  horizontal.setPageStep(viewport()->width());
  horizontal.setSingleStep(fontMetrics().averageCharWidth());
}

void ProgressListView::updateGeometries() {
  updateScrollBars();
  QAbstractItemView::updateGeometries();
}

void ProgressListView::resizeEvent(QResizeEvent* event) {
  QAbstractItemView::resizeEvent(event);
  updateScrollBars();
}

QRect ProgressListView::visualRect(const QModelIndex& index) const {
  if (!index.isValid()) return {};
  return QRect(-horizontalOffset(), index.row() * rowHeight() - verticalOffset(),
               std::max(viewport()->width(), widestLine_), rowHeight());
}

void ProgressListView::scrollTo(const QModelIndex& index, ScrollHint hint) {
  if (!index.isValid()) return;
  const int row = index.row();
  const int first = verticalScrollBar()->value();
  const int page = rowsPerPage();
  if (hint == PositionAtCenter) return verticalScrollBar()->setValue(row - page / 2);
  if (row < first || hint == PositionAtTop) return verticalScrollBar()->setValue(row);
  if (row >= first + page || hint == PositionAtBottom) {
    verticalScrollBar()->setValue(row - page + 1);
  }
}

QModelIndex ProgressListView::indexAt(const QPoint& point) const {
  return lines_.index(rowAt(point.y()), 0);
}

void ProgressListView::paintEvent(QPaintEvent* event) {
  isMoved_ = false;
  QPainter painter(viewport());
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  const int last = std::min(rowAt(event->rect().bottom()), lines_.rowCount() - 1);
  for (int row = rowAt(event->rect().top()); row <= last; ++row) {
    const QModelIndex index = lines_.index(row, 0);
    option.rect = visualRect(index);
    option.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    option.state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
    itemDelegateForIndex(index)->paint(&painter, option, index);
  }
}

void ProgressListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QAbstractItemView::currentChanged(current, previous);
  if (current.isValid() && hasFocus()) notifyScreenReader(QAccessible::Focus, current.row());
}

void ProgressListView::notifyScreenReader(QAccessible::Event event, int row) {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent notification(this, event);
  notification.setChild(row);
  QAccessible::updateAccessibility(&notification);
}

// A line without a reason shows the tool tip of the whole list.
bool ProgressListView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const QModelIndex index = indexAt(static_cast<QHelpEvent*>(event)->pos());
    if (!index.isValid() || lines_.reason(index.row()).isEmpty()) return false;
  }
  return QAbstractItemView::viewportEvent(event);
}

void ProgressListView::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  if (event->matches(QKeySequence::Copy)) return copySelectedLines();
  if (key == Qt::Key_Return || key == Qt::Key_Enter) return showReason();
  if (key == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
    return popUpMenu(belowCurrentLine());
  }
  QAbstractItemView::keyPressEvent(event);
}

void ProgressListView::contextMenuEvent(QContextMenuEvent* event) {
  popUpMenu(event->reason() == QContextMenuEvent::Keyboard ? belowCurrentLine()
                                                           : event->globalPos());
}

// exec() would block the run until the menu is closed.
void ProgressListView::popUpMenu(const QPoint& place) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addActions(actions());
  menu->popup(place);
}

QPoint ProgressListView::belowCurrentLine() const {
  const QRect shown = viewport()->rect();
  const QPoint corner = visualRect(currentIndex()).bottomLeft() + QPoint(horizontalOffset(), 0);
  return viewport()->mapToGlobal(shown.contains(corner) ? corner
                                                        : shown.topLeft() + QPoint(0, rowHeight()));
}

void ProgressListView::showReason() {
  const QModelIndex current = currentIndex();
  if (current.isValid()) scrollTo(current);
  const QPoint place = belowCurrentLine();
  const QString reason = current.data(Qt::ToolTipRole).toString();
  if (!reason.isEmpty()) return QToolTip::showText(place, reason, viewport());
  QHelpEvent asked(QEvent::ToolTip, parentWidget()->mapFromGlobal(place), place);
  QApplication::sendEvent(parentWidget(), &asked);
}

void ProgressListView::copySelectedLines() const {
  QItemSelection ranges = selectionModel()->selection();
  std::sort(ranges.begin(), ranges.end(),
            [](const auto& left, const auto& right) { return left.top() < right.top(); });
  QString text;
  for (const QItemSelectionRange& range : ranges) {
    for (int row = range.top(); row <= range.bottom(); ++row) text += lines_.line(row) + u'\n';
  }
  text.chop(1);
  QApplication::clipboard()->setText(text);
}

QModelIndex ProgressListView::moveCursor(CursorAction action, Qt::KeyboardModifiers) {
  const int last = lines_.rowCount() - 1;
  const int current = currentIndex().row();
  const auto row = [&](int wanted) { return lines_.index(std::clamp(wanted, 0, last), 0); };
  if (last < 0) return {};
  switch (action) {
    case MoveUp:
    case MovePrevious:
      return row(current - 1);
    case MoveDown:
    case MoveNext:
      return row(current + 1);
    case MovePageUp:
      return row(current - rowsPerPage());
    case MovePageDown:
      return row(current + rowsPerPage());
    case MoveHome:
      return row(0);
    case MoveEnd:
      return row(last);
    case MoveLeft:
    case MoveRight:
      return currentIndex();
  }
  return {};
}

int ProgressListView::horizontalOffset() const {
  return horizontalScrollBar()->value();
}

int ProgressListView::verticalOffset() const {
  return verticalScrollBar()->value() * rowHeight();
}

bool ProgressListView::isIndexHidden(const QModelIndex&) const {
  return false;
}

void ProgressListView::setSelection(const QRect& rect,
                                    QItemSelectionModel::SelectionFlags command) {
  const QRect area = rect.normalized();
  const int first = std::max(rowAt(area.top()), 0);
  const int last = std::min(rowAt(area.bottom()), lines_.rowCount() - 1);
  QItemSelection rows;
  if (first <= last) rows.select(lines_.index(first, 0), lines_.index(last, 0));
  selectionModel()->select(rows, command);
}

QRegion ProgressListView::visualRegionForSelection(const QItemSelection& selection) const {
  QRegion region;
  for (const QItemSelectionRange& range : selection) {
    const QRect rows = visualRect(range.topLeft()).united(visualRect(range.bottomRight()));
    region += rows & viewport()->rect();
  }
  return region;
}

ProgressListBox::ProgressListBox(QWidget* parent)
    : QWidget(parent), view_(new ProgressListView(this)) {
  setFocusProxy(view_);
}

void ProgressListBox::setVisibleHeight(int height) {
  visibleHeight_ = height;
  layOut();
}

void ProgressListBox::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  layOut();
}

void ProgressListBox::layOut() {
  view_->setGeometry(0, 0, width(), std::clamp(height(), 0, std::max(0, visibleHeight_)));
}

}  // namespace orvane
