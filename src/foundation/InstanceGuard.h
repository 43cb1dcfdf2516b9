#pragma once

#include <optional>
#include <string>

#include "foundation/FileDescriptor.h"

namespace orvane {

/// Marks this process as the one that works in a program folder. The mark is a lock on the folder
/// itself: it needs no file and ends with the process in every case. Where a folder cannot be
/// locked (NFS locks only files that are open for writing), the file `Orvane.lock` in it is locked
/// instead, and stays.
class InstanceGuard {
 public:
  /// `folder` is a path text.
  explicit InstanceGuard(const std::wstring& folder);

  /// True when another process holds the mark. False, with a log line that gives the reasons, where
  /// neither lock is possible.
  bool anotherRuns() const { return anotherRuns_; }

 private:
  /// Throws Failure when `path` cannot be locked at all.
  void lock(const std::wstring& path, int flags);

  std::optional<FileDescriptor> locked_;
  bool anotherRuns_ = false;
};

}  // namespace orvane
