#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

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

/// A frame whose caption interrupts its upper border, so that its whole height is left to the
/// controls inside. (The frame of the Fusion style begins below the caption.)
class OptionFrame : public QGroupBox {
 public:
  /// A screen reader gives a frame inside another one the outer caption, unless it is told.
  OptionFrame(const QString& caption, QWidget* parent) : QGroupBox(caption, parent) {
    setAccessibleName(caption);
  }

  /// Where the caption lies.
  QRect captionRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

/// A push button that wraps its caption into lines of about the same length when it is too narrow
/// for the whole of it.
class WrapButton : public QPushButton {
 public:
  using QPushButton::QPushButton;

  /// The space that the wrapped caption takes, in the middle of the button.
  QRect captionRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  /// What the style leaves to the caption.
  QRect contentsArea() const;
};

}  // namespace orvane
