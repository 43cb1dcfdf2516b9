#pragma once

#include <QAbstractItemView>
#include <QAccessible>
#include <QTimer>

#include "foundation/WindowServices.h"
#include "window/LineModel.h"

namespace orvane {

/// The list of progress lines. All rows have the same height, so the cost of adding a line does not
/// depend on the number of lines. (QListView lays out all rows again after each change.)
///
/// The list scrolls to a new line unless the operator has scrolled back. Ctrl+C copies the selected
/// lines as text. The tool tip of a line is its reason, if it has one; Enter shows the reason of
/// the current line. The context menu contains the actions of the widget and does not block a run.
class ProgressListView : public QAbstractItemView, public ProgressList {
 public:
  explicit ProgressListView(QWidget* parent = nullptr);

  void addItem(std::wstring_view line) override { addItemWithReason(line, {}); }
  void addItemWithReason(std::wstring_view line, std::wstring_view reason) override;
  void clear() override;
  void refresh() override;
  void refreshInTime() override;
  void refreshNow() override;

  QRect visualRect(const QModelIndex& index) const override;
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
  QModelIndex indexAt(const QPoint& point) const override;

  void copySelectedLines() const;
  /// Shows the reason of the current line in a tip below it. If it has none, the tip of the whole
  /// list is shown there.
  void showReason();

 protected:
  bool viewportEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void updateGeometries() override;
  /// Does nothing. Qt would ask the screen for the place of the pointer, and wait for the answer.
  void verticalScrollbarValueChanged(int /*value*/) override {}
  /// Moves what is drawn already, so that a new line costs the drawing of one line.
  void scrollContentsBy(int dx, int dy) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  int horizontalOffset() const override;
  int verticalOffset() const override;
  bool isIndexHidden(const QModelIndex& index) const override;
  void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
  QRegion visualRegionForSelection(const QItemSelection& selection) const override;

 private:
  int rowHeight() const;
  /// The number of rows that fit completely, at least 1.
  int rowsPerPage() const;
  /// The row at `y` in the viewport; may be outside the list.
  int rowAt(int y) const;
  void updateScrollBars();
  /// Shows the lines that have been added since the last time, with the next redraw.
  void showNewLines();
  /// Redraws the list at once and begins a frame.
  void drawFrame();
  /// Sends an event of a line to screen readers.
  void notifyScreenReader(QAccessible::Event event, int row);
  QPoint belowCurrentLine() const;
  void popUpMenu(const QPoint& place);

  LineModel lines_;
  int widestLine_ = 0;     ///< in pixels, for the horizontal scroll bar
  int linesShown_ = 0;     ///< the others wait for the end of the frame
  bool isMoved_ = false;   ///< what is drawn has been moved, and nothing has been drawn since
  QTimer untilNextFrame_;  ///< runs during a frame
};

/// The area of the progress list. It extends below the lower edge of the window; the list inside
/// ends at that edge, so that its newest line and its scroll bars are completely visible.
class ProgressListBox : public QWidget {
 public:
  explicit ProgressListBox(QWidget* parent = nullptr);

  ProgressListView& view() { return *view_; }

  /// Sets the height of the visible part, in pixels from the top.
  void setVisibleHeight(int height);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void layOut();

  ProgressListView* view_;
  int visibleHeight_ = QWIDGETSIZE_MAX;
};

}  // namespace orvane
