#pragma once

#include <QWidget>
#include <string>

namespace orvane {

/// Lets the operator choose a folder of the file system. The answer is a path text; empty for a
/// cancel.
std::wstring BrowseForFolder(QWidget* hOwner, const std::wstring& sTitle);

}  // namespace orvane
