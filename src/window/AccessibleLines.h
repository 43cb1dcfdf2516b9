#pragma once

#include <QAccessible>

namespace orvane {

/// A factory for `QAccessible::installFactory` that presents a ProgressListView to screen readers
/// as a list of lines. (Qt's own factory supports only the views of Qt.)
QAccessibleInterface* accessibleLines(const QString& className, QObject* object);

}  // namespace orvane
