#pragma once

#include <QString>
#include <QWidget>

/// What explains the window: tool tips, accessible names and keys of the controls, and the
/// operator's guide, one HTML file that is installed with the program.
namespace orvane {

/// Gives every control of the window a tool tip that says how it affects the output files, a name
/// for screen readers, and an Alt key that presses a button or moves the focus to a box. The keys
/// are shown in the tool tips, because the captions are fixed.
void addControlHelp(QWidget& window);

/// The native path of the guide in the program folder or in the installed package; empty if there
/// is none.
QString guideFile();

/// Opens the guide in the browser of the desktop. A box reports a missing guide or browser.
void openGuide();

}  // namespace orvane
