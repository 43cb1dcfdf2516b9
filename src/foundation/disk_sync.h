#pragma once

#include <string>

namespace orvane {

/// Returns once everything that was written to the disk of `folder` lies on it, so that a power cut
/// takes nothing of it away. A slow disk takes its time: the window's events are handled meanwhile.
/// A folder that is not there has nothing to write. Throws Failure when something could not be
/// written.
void syncDiskOf(const std::wstring& folder);

}  // namespace orvane
