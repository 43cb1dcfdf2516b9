#pragma once

namespace orvane {

/// Gives the application the same look on every desktop: style, colours, a Chinese font in the size
/// that the layout is made for, and Chinese texts in the menus of Qt's own controls.
void applyAppearance();

}  // namespace orvane
