#pragma once

#include <QIcon>
#include <QSize>

/// How the program looks: style, colours, font, icons, and the scale that fits on the screen.
namespace orvane {

/// Gives the application the same look on every desktop: style, colours, a Chinese font in the size
/// that the layout is made for, and Chinese texts in the menus of Qt's own controls.
void applyAppearance();

// The icons are drawn by the program, so that they are sharp at every scale.
QIcon windowIcon();
QIcon runIcon();
QIcon stopIcon();
QIcon exitIcon();

/// Returns the factor, at most 1, by which the current scale must be reduced for a window of size
/// `design` and its title bar to fit on `available`. `pixelRatio` is the current scale, in screen
/// dots per Qt pixel. The reduced scale is at least one dot per pixel, which is the smallest that
/// Qt can draw.
double fittingScale(QSize design, QSize available, double pixelRatio);

/// Restarts the process at a smaller scale if a window of size `design` does not fit on the screen.
/// The controls on the left have fixed positions, so the buttons would be below the edge of the
/// screen. Must be called after the application and before the window is created. Returns if the
/// window fits or if the process has already been restarted.
void fitToScreen(QSize design, char** argv);

}  // namespace orvane
