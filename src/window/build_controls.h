#pragma once

#include <QWidget>
#include <string>

namespace orvane {

/// Creates the controls of the table inside `window`, each under its object name, and sets their
/// tab order.
void buildControls(QWidget& window);

/// A control by its object name, which must exist with this type.
template <typename Control>
Control& control(const QWidget& window, const QString& name) {
  auto* found = window.findChild<Control*>(name);
  Q_ASSERT(found != nullptr);
  return *found;
}

}  // namespace orvane
