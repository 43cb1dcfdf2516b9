#pragma once

#include <QLabel>

namespace orvane {

/// A label with a gap of blanks in its caption, in which another control is placed. The gap is as
/// wide as that control wants it, whatever the width of a blank in the font is.
class GapLabel : public QLabel {
 public:
  using QLabel::QLabel;

  /// The place where the caption goes on after the gap, in pixels from the left of the label.
  void setGapEnd(int x) { gapEnd_ = x; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int gapEnd_ = 0;
};

}  // namespace orvane
