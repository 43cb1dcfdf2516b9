#pragma once

#include <QString>
#include <string>
#include <string_view>

/// Conversion between path texts and the native paths of Qt. Both directions are exact: what has no
/// exact form in the other is refused, so that no path leads to another file.
namespace orvane {

/// The native path of a path text, for QFileInfo and the like. Empty if Qt has none: for a text
/// that is no path, and for a name that is not UTF-8.
QString toQtPath(std::wstring_view pathText);

/// The path text of a native path. Throws Failure for a text that cannot be encoded.
std::wstring fromQtPath(const QString& native);

}  // namespace orvane
