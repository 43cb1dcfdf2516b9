#pragma once

namespace orvane {

/// Gives the application one look on every desktop: style, colours, and a Chinese font in the size
/// that the controls are laid out for.
void applyAppearance();

}  // namespace orvane
