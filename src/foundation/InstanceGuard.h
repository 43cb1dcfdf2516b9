#pragma once

#include <optional>
#include <string>

#include "foundation/FileDescriptor.h"

namespace orvane {

/// Lets only one process work in a program folder. It locks the folder itself, which needs no file;
/// the lock ends with the process. If a folder cannot be locked (NFS locks only files that are open
/// for writing), the file `Orvane.lock` in it is locked instead. This file is not deleted.
class InstanceGuard {
 public:
  /// `folder` is a path text.
  explicit InstanceGuard(const std::wstring& folder);

  /// True if another process holds the lock. If neither lock is possible, false, and a log line
  /// gives the reasons.
  bool anotherRuns() const { return anotherRuns_; }

 private:
  /// Throws Failure if `path` cannot be locked for a reason other than a second process.
  void lock(const std::wstring& path, int flags);

  std::optional<FileDescriptor> locked_;
  bool anotherRuns_ = false;
};

}  // namespace orvane
