#pragma once

#include <QIcon>

/// The icons of the window, drawn by the program so that they are sharp at every scale.
namespace orvane {

QIcon windowIcon();
QIcon runIcon();
QIcon stopIcon();
QIcon exitIcon();

}  // namespace orvane
