#pragma once

#include <QWidget>
#include <functional>

#include "settings/ExportForm.h"
#include "window/ProgressListView.h"

namespace orvane {

/// Gives the list its context menu: actions on its lines, the progress of the run, the logs, the
/// reports, the output folder and the guide. The keys of the last five work in the whole window.
/// None of the actions blocks a run.
void addListActions(QWidget& window, ProgressListView& list, const ExportForm& form,
                    const std::function<void()>& showProgress);

}  // namespace orvane
