#pragma once

#include <QAbstractItemView>
#include <QAccessible>

#include "foundation/WindowServices.h"
#include "window/LineModel.h"

namespace orvane {

/// The list of progress lines. All rows are equally high, so nothing here depends on the number of
/// lines: adding the millionth line costs what the first one cost. (QListView lays out every row
/// again after each change.)
///
/// The list shows its newest line after an add, unless the operator has scrolled back to read.
/// Ctrl+C copies the selected lines as text. The tool tip of a line that tells a failure is its
/// reason; Enter shows that of the current line. The context menu holds the actions that the widget
/// was given, and opens without halting a run.
class ProgressListView : public QAbstractItemView, public ProgressList {
 public:
  explicit ProgressListView(QWidget* parent = nullptr);

  void addItem(std::wstring_view line) override { addFailure(line, {}); }
  void addFailure(std::wstring_view line, std::wstring_view reason) override;
  void clear() override;
  void refresh() override;

  QRect visualRect(const QModelIndex& index) const override;
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
  QModelIndex indexAt(const QPoint& point) const override;

  void copySelectedLines() const;
  /// Shows the reason of the current line below it, or that it has none.
  void showReason();

 protected:
  bool viewportEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void updateGeometries() override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  int horizontalOffset() const override;
  int verticalOffset() const override;
  bool isIndexHidden(const QModelIndex& index) const override;
  void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
  QRegion visualRegionForSelection(const QItemSelection& selection) const override;

 private:
  int rowHeight() const;
  /// The number of rows that fit as a whole, at least 1.
  int rowsOnAPage() const;
  /// The row at a height of the viewport, which may lie outside the list.
  int rowAt(int y) const;
  void updateScrollBars();
  /// Tells a screen reader of a line.
  void tellOfLine(QAccessible::Event event, int row);
  QPoint belowCurrentLine() const;
  void popUpMenu(const QPoint& place);

  LineModel lines_;
  int widestLine_ = 0;  ///< in pixels, for the horizontal scroll bar
};

/// The place of the progress list. It reaches a little below the window's lower edge; the list
/// inside ends where the window ends, so that its newest line and its scroll bars are seen whole.
class ProgressListBox : public QWidget {
 public:
  explicit ProgressListBox(QWidget* parent = nullptr);

  ProgressListView& view() { return *view_; }

  /// How much of this place the window shows, in pixels from its top.
  void setVisibleHeight(int height);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void layOut();

  ProgressListView* view_;
  int visibleHeight_ = QWIDGETSIZE_MAX;
};

}  // namespace orvane
