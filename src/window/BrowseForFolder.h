#pragma once

#include <QStringList>
#include <QWidget>
#include <string>

namespace orvane {

/// Lets the operator choose a folder of the file system, or make a new one; nothing else can be
/// changed there. Opens at `sOpenAt`, or at the nearest folder above it that exists, or at home.
/// Both folders are path texts; the answer is empty for a cancel and after a failure.
std::wstring BrowseForFolder(QWidget* hOwner, const std::wstring& sTitle,
                             const std::wstring& sOpenAt);

/// The native paths of what is mounted under /media, /run/media and /mnt, by a table of
/// getmntent(3). The volumes themselves are not asked: a network disk that is gone would not
/// answer.
QStringList mountedVolumes(const char* table = "/proc/self/mounts");

}  // namespace orvane
