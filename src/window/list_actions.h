#pragma once

#include <QWidget>

#include "settings/ExportForm.h"
#include "window/ProgressListView.h"

namespace orvane {

/// Gives the list its context menu: actions on its lines, today's log, the output folder and the
/// guide. The keys of the last three work in the whole window. None of the actions blocks a run.
void addListActions(QWidget& window, ProgressListView& list, const ExportForm& form);

}  // namespace orvane
