#pragma once

#include <QIcon>

/// The icons of the window, drawn when the program starts: sharp at every scale, no files needed.
namespace orvane {

QIcon windowIcon();
QIcon runIcon();
QIcon stopIcon();
QIcon exitIcon();

}  // namespace orvane
