#pragma once

#include <QString>
#include <QWidget>
#include <functional>

namespace orvane {

/// Opens a file or a folder with the program that the desktop has for it, and returns at once. If
/// that is not possible, `failed` is called with the reason, now or later, as long as `owner`
/// lives.
/// @param path  a native path.
void openOnDesktop(QWidget& owner, const QString& path,
                   const std::function<void(const QString& reason)>& failed);

}  // namespace orvane
