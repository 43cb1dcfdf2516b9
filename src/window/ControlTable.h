#pragma once

#include <span>

/// The controls of `frmMain`: their kinds, captions and positions.
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

inline constexpr int kClientWidth = 13995;
inline constexpr int kClientHeight = 9675;
inline constexpr int kListLeft = 6120;

/// All controls. A control comes after its parent and after any control that it covers.
std::span<const ControlRow> controlTable();

}  // namespace orvane
