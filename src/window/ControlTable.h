#pragma once

#include <span>

/// The controls of `frmMain`: what they are, what they say and where they lie.
namespace orvane {

enum class ControlKind {
  List,
  Frame,
  Option,
  Check,
  Label,
  GapLabel,  ///< another control is placed in the blanks of its caption
  Text,
  TallText,  ///< wraps what is too long for one line
  DropDown,
  Button,
  WrapButton,  ///< wraps its caption
};

/// Frames and labels only show.
constexpr bool takesFocus(ControlKind kind) {
  return kind != ControlKind::Frame && kind != ControlKind::Label && kind != ControlKind::GapLabel;
}

/// One control. Measures are twips, from the upper left corner of the control it lies inside.
struct ControlRow {
  const char* name;    ///< the object name; a button of a group ends in `_<index>`
  const char* inside;  ///< the control it lies inside; empty for the window itself
  ControlKind kind;
  const wchar_t* caption;
  int left, top, width, height;
  int tab;  ///< the place in the tab order
};

/// 1440 to the inch, and 15 to the pixel at 96 dots an inch.
inline constexpr int kTwipsPerPixel = 15;

inline constexpr int kClientWidth = 13995;
inline constexpr int kClientHeight = 9675;
inline constexpr int kListLeft = 6120;

/// All controls, each one behind the control it lies inside, and behind what it lies on.
std::span<const ControlRow> controlTable();

}  // namespace orvane
