#pragma once

#include <QStringList>
#include <QWidget>
#include <string>

namespace orvane {

/// Lets the operator choose or create a folder; nothing else can be changed in the dialog. A path
/// can be typed in its native form or as a path text. A folder that cannot be entered is refused,
/// and one that no path leads to is not listed. It opens at `sOpenAt`, at the nearest existing
/// folder above it, or at the home folder. Paths are path texts. Returns an empty text after a
/// cancel or a failure.
std::wstring BrowseForFolder(QWidget* hOwner, const std::wstring& sTitle,
                             const std::wstring& sOpenAt);

/// The native paths of the volumes mounted under /media, /run/media and /mnt, from a table of
/// getmntent(3). The volumes are not accessed, because an unreachable network disk would block.
QStringList mountedVolumes(const char* table = "/proc/self/mounts");

}  // namespace orvane
