#pragma once

#include <QWidget>

namespace orvane {

/// Gives every control of the window a tool tip that says how it affects the output files, a name
/// for screen readers, and an Alt key that presses a button or moves the focus to a box. The keys
/// are shown in the tool tips, because the captions are fixed.
void addControlHelp(QWidget& window);

}  // namespace orvane
