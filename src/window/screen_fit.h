#pragma once

#include <QSize>

namespace orvane {

/// The scale, at most 1, at which a window of `design` and its title bar fit on `available`.
double fittingScale(QSize design, QSize available);

/// Begins the process anew at a smaller scale when the window's design size does not fit on the
/// screen: the left column has fixed places, and its buttons would lie below the screen's edge.
/// To be called with the application there and no window yet. Returns when the window fits, and
/// when this process has been begun anew already.
void fitToScreen(char** argv);

}  // namespace orvane
