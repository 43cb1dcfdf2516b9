#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "window/control_table.h"

/// The controls of `frmMain`: their construction, and the widgets that they need.
namespace orvane {

/// Creates the controls of the table inside `window`, each with its object name, and sets the tab
/// order.
void buildControls(QWidget& window);

/// Returns the control with an object name. Throws Failure until the controls have been created.
QWidget& widgetNamed(const QWidget& window, const char* name);

/// The same as what it was made as.
template <typename Control>
Control& control(const QWidget& window, ControlName<Control> name) {
  return static_cast<Control&>(widgetNamed(window, name.text()));
}

// Widgets with special captions.

/// A label with blanks in its caption, on which another control is placed. The width of the gap is
/// set, so that it does not depend on the width of a blank in the font.
class GapLabel : public QLabel {
 public:
  using QLabel::QLabel;

  /// Sets where the caption continues after the gap, in pixels from the left of the label.
  void setGapEnd(int x) { gapEnd_ = x; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int gapEnd_ = 0;
};

/// A frame whose caption interrupts its upper border. (In the Fusion style the frame begins below
/// the caption, which leaves less height for the controls inside.)
class OptionFrame : public QGroupBox {
 public:
  /// Sets the accessible name too; otherwise a frame inside another one gets the outer caption.
  OptionFrame(const QString& caption, QWidget* parent) : QGroupBox(caption, parent) {
    setAccessibleName(caption);
  }

  /// The area of the caption, in pixels.
  QRect captionRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

/// A push button that wraps its caption into lines of about equal length if it is too narrow for
/// one line.
class WrapButton : public QPushButton {
 public:
  using QPushButton::QPushButton;

  /// The area of the wrapped caption, in pixels, centred in the button.
  QRect captionRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  /// The area that the style leaves for the caption.
  QRect contentsArea() const;
};

}  // namespace orvane
