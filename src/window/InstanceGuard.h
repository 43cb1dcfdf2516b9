#pragma once

#include <optional>
#include <string>

#include "foundation/FileDescriptor.h"

namespace orvane {

/// Marks this process as the one that works in a program folder. The mark is a lock on the folder
/// itself, so it needs no file and ends with the process, however that ends.
class InstanceGuard {
 public:
  /// `folder` is a path text.
  explicit InstanceGuard(const std::wstring& folder);

  /// True when another process holds the mark. False when nothing can be locked at all (some
  /// network file systems): the program then runs without a guard.
  bool anotherRuns() const { return anotherRuns_; }

 private:
  std::optional<FileDescriptor> folder_;
  bool anotherRuns_ = false;
};

}  // namespace orvane
