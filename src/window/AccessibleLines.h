#pragma once

#include <QAccessible>

namespace orvane {

/// A factory for `QAccessible::installFactory`: what a screen reader sees of a ProgressListView is
/// a list of lines. (Qt knows the rows of its own views only.)
QAccessibleInterface* accessibleLines(const QString& className, QObject* object);

}  // namespace orvane
