#pragma once

#include <QSize>

namespace orvane {

/// Returns the factor, at most 1, by which the current scale must be reduced for a window of size
/// `design` and its title bar to fit on `available`. `pixelRatio` is the current scale, in screen
/// dots per Qt pixel. The reduced scale is at least one dot per pixel, which is the smallest that
/// Qt can draw.
double fittingScale(QSize design, QSize available, double pixelRatio);

/// Restarts the process at a smaller scale if the window does not fit on the screen. The controls
/// on the left have fixed positions, so the buttons would be below the edge of the screen. Must be
/// called after the application and before the window is created. Returns if the window fits or if
/// the process has already been restarted.
void fitToScreen(char** argv);

}  // namespace orvane
