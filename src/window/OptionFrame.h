#pragma once

#include <QGroupBox>

namespace orvane {

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

}  // namespace orvane
