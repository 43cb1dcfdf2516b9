#pragma once

#include <QString>

/// The operator's guide: one HTML file that comes with the program.
namespace orvane {

/// The guide beside the program, or the one of the installed package; empty when there is none.
QString guideFile();

/// Opens the guide in the desktop's browser. A box says so when there is none, or nothing that
/// opens it.
void openGuide();

}  // namespace orvane
