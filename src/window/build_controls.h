#pragma once

#include <QWidget>
#include <string>

namespace orvane {

/// Creates the controls of the table inside `window`, each with its object name, and sets the tab
/// order.
void buildControls(QWidget& window);

/// Returns the control with an object name. It must exist and have this type.
template <typename Control>
Control& control(const QWidget& window, const QString& name) {
  auto* found = window.findChild<Control*>(name);
  Q_ASSERT(found != nullptr);
  return *found;
}

}  // namespace orvane
