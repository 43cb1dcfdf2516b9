#include "window/ProgressListView.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "window/AccessibleLines.h"

namespace orvane {
namespace {

constexpr int kRowPadding = 2;
constexpr int kLinePadding = 8;

}  // namespace

ProgressListView::ProgressListView(QWidget* parent) : QAbstractItemView(parent) {
  setModel(&lines_);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setTextElideMode(Qt::ElideNone);
  QAccessible::installFactory(accessibleLines);
}

void ProgressListView::addItem(std::wstring_view line) {
  if (lines_.add(line)) {
    const int width = fontMetrics().horizontalAdvance(
        QString::fromWCharArray(line.data(), static_cast<qsizetype>(line.size())));
    widestLine_ = std::max(widestLine_, width + kLinePadding);
  }
  updateScrollBars();
  viewport()->update();
  tellOfLine(QAccessible::ObjectCreated, lines_.rowCount() - 1);
}

void ProgressListView::clear() {
  lines_.clear();
  widestLine_ = 0;
  updateScrollBars();
}

void ProgressListView::refresh() {
  viewport()->repaint();
}

int ProgressListView::rowHeight() const {
  return fontMetrics().height() + kRowPadding;
}

int ProgressListView::rowsOnAPage() const {
  return std::max(1, viewport()->height() / rowHeight());
}

int ProgressListView::rowAt(int y) const {
  return static_cast<int>(std::floor(double(y + verticalOffset()) / rowHeight()));
}

void ProgressListView::updateScrollBars() {
  QScrollBar& vertical = *verticalScrollBar();
  const bool showsNewestLine = vertical.value() == vertical.maximum();
  vertical.setRange(0, std::max(0, lines_.rowCount() - rowsOnAPage()));
  vertical.setPageStep(rowsOnAPage());
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
  const int page = rowsOnAPage();
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
  if (current.isValid() && hasFocus()) tellOfLine(QAccessible::Focus, current.row());
}

void ProgressListView::tellOfLine(QAccessible::Event event, int row) {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent told(this, event);
  told.setChild(row);
  QAccessible::updateAccessibility(&told);
}

void ProgressListView::keyPressEvent(QKeyEvent* event) {
  if (!event->matches(QKeySequence::Copy)) return QAbstractItemView::keyPressEvent(event);
  copySelectedLines();
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
      return row(current - rowsOnAPage());
    case MovePageDown:
      return row(current + rowsOnAPage());
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

}  // namespace orvane
