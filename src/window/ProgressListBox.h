#pragma once

#include "window/ProgressListView.h"

namespace orvane {

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
