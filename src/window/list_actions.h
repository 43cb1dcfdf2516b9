#pragma once

#include <QWidget>

#include "settings/ExportForm.h"
#include "window/ProgressListView.h"

namespace orvane {

/// Gives the list its context menu: actions on its lines, the logs, the reports, the output folder
/// and the guide. The keys of the last four work in the whole window. None of the actions blocks a
/// run.
void addListActions(QWidget& window, ProgressListView& list, const ExportForm& form);

}  // namespace orvane
