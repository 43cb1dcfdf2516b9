#pragma once

namespace orvane {

/// Makes the process keep the memory that it frees, up to a few pages' worth: the next page takes
/// as much again, and each time the system would have to clear it. Called once, at the start.
void keepFreedMemory();

}  // namespace orvane
