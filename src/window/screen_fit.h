#pragma once

#include <QSize>

namespace orvane {

/// The share, at most 1, of the present scale at which a window of `design` and its title bar fit
/// on `available`. `pixelRatio` is the present scale, in dots of the screen for one pixel of Qt;
/// the share never leads below one dot for a pixel, which Qt cannot draw.
double fittingScale(QSize design, QSize available, double pixelRatio);

/// Begins the process anew at a smaller scale when the window's design size does not fit on the
/// screen: the left column has fixed places, and its buttons would lie below the screen's edge.
/// To be called with the application there and no window yet. Returns when the window fits, and
/// when this process has been begun anew already.
void fitToScreen(char** argv);

}  // namespace orvane
