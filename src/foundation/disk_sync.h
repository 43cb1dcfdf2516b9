#pragma once

#include <functional>
#include <string>

/// Bringing what was written to the disk, so that a power cut takes nothing of it away.
namespace orvane {

/// Runs `sync`, which waits for a disk. A slow disk takes its time: `sync` runs on a thread of its
/// own, and the window's events are handled meanwhile. Where no thread can be had it runs on this
/// one. Returns when it is done and throws what it throws.
void syncBesideWindow(const std::function<void()>& sync);

/// True when the file system of `path` has to be told of each file and folder: one in user space
/// (FUSE: ntfs-3g, exFAT and others) never hears of a `syncDiskOf`. Throws Failure.
bool syncsFilesOnly(const std::wstring& path);

/// Waits until everything that was written to the disk of `folder` is on it. Throws Failure.
void syncDiskOf(const std::wstring& folder);

/// Waits until the content of a file, or the list of names in a folder, is on the disk. A file
/// system that knows no such request counts as having written. Throws Failure.
void syncEntry(const std::wstring& path);

}  // namespace orvane
