#include "window/AccessibleLines.h"

#include <QAccessibleWidget>
#include <QPointer>
#include <memory>
#include <unordered_map>

#include "window/ProgressListView.h"

namespace orvane {
namespace {

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

}  // namespace

QAccessibleInterface* accessibleLines(const QString&, QObject* object) {
  auto* const list = dynamic_cast<ProgressListView*>(object);
  return list == nullptr ? nullptr : new AccessibleList(*list);
}

}  // namespace orvane
