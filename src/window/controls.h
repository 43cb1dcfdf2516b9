#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSize>
#include <QWidget>
#include <span>

/// The controls of `frmMain`: their kinds, captions and positions in a table, the widgets that they
/// need, and their construction.
namespace orvane {

enum class ControlKind {
  List,
  Frame,
  Option,
  Check,
  Label,
  GapLabel,  ///< another control is placed in the blanks of its caption
  Text,
  TallText,  ///< wraps long text
  DropDown,
  Button,
  WrapButton,  ///< wraps its caption
};

constexpr bool takesFocus(ControlKind kind) {
  return kind != ControlKind::Frame && kind != ControlKind::Label && kind != ControlKind::GapLabel;
}

/// One control. Positions and sizes are in twips, relative to the upper left corner of the parent.
struct ControlRow {
  const char* name;    ///< the object name; for a button of a group it ends in `_<index>`
  const char* parent;  ///< the name of the parent control; empty for the window itself
  ControlKind kind;
  const wchar_t* caption;
  int left, top, width, height;
  int tab;  ///< the position in the tab order
};

/// A twip is 1/1440 inch, so that a pixel at 96 dpi has 15.
inline constexpr int kTwipsPerPixel = 15;

/// The client area of the window, in pixels.
inline constexpr QSize kClientSize(13995 / kTwipsPerPixel, 9675 / kTwipsPerPixel);

/// The left edge of the progress list, in twips.
inline constexpr int kListLeft = 6120;

/// All controls. A control comes after its parent and after any control that it covers.
std::span<const ControlRow> controlTable();

/// Creates the controls of the table inside `window`, each with its object name, and sets the tab
/// order.
void buildControls(QWidget& window);

/// Returns the control with an object name. It must exist and have this type.
template <typename Control>
Control& control(const QWidget& window, const QString& name) {
  auto* found = dynamic_cast<Control*>(window.findChild<QWidget*>(name));
  Q_ASSERT(found != nullptr);
  return *found;
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
