#pragma once

#include <QWidget>

namespace orvane {

/// Gives every control of the window, beside what it shows, a tool tip that says what it does to
/// the files, a name for screen readers, and a key with Alt that reaches it: a button is pressed, a
/// box gets the focus. The keys stand in the tool tips, because the captions are fixed texts.
void addControlHelp(QWidget& window);

}  // namespace orvane
