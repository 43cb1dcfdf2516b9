#pragma once

#include <QString>

/// The operator's guide: one HTML file that is installed with the program.
namespace orvane {

/// The native path of the guide in the program folder or in the installed package; empty if there
/// is none.
QString guideFile();

/// Opens the guide in the browser of the desktop. A box reports a missing guide or browser.
void openGuide();

}  // namespace orvane
