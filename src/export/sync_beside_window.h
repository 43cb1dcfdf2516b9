#pragma once

#include <functional>

namespace orvane {

/// Runs `sync`, which waits for a disk, on another thread, and `work`, if given, on a third one.
/// Handles the window's events until both have ended. What no thread can be started for runs on
/// this one. Throws what they throw.
void syncBesideWindow(const std::function<void()>& sync, const std::function<void()>& work = {});

}  // namespace orvane
