#pragma once

#include <QWidget>

#include "settings/ExportForm.h"
#include "window/ProgressListView.h"

namespace orvane {

/// Gives the list its context menu: what can be done with its lines, today's log, the output
/// folder, the guide. The keys of the last three work in the whole window. Nothing here halts a
/// run.
void addListActions(QWidget& window, ProgressListView& list, const ExportForm& form);

}  // namespace orvane
