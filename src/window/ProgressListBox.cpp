#include "window/ProgressListBox.h"

#include <algorithm>

namespace orvane {

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
