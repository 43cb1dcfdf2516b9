#pragma once

namespace orvane {

/// Gives the application one look on every desktop: style, colours, a Chinese font in the size
/// that the controls are laid out for, and Chinese words in what Qt brings itself.
void applyAppearance();

}  // namespace orvane
