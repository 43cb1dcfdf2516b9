#pragma once

#include <QPushButton>

namespace orvane {

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
