#pragma once

#include <optional>
#include <string>

#include "foundation/FileDescriptor.h"

namespace orvane {

/// Marks this process as the one that works in a program folder. The mark is a lock on the folder
/// itself, so it needs no file and ends with the process, however that ends. Where a folder cannot
/// be locked (NFS locks only what is open for writing), it is a lock on the file `Orvane.lock` in
/// it, which stays there.
class InstanceGuard {
 public:
  /// `folder` is a path text.
  explicit InstanceGuard(const std::wstring& folder);

  /// True when another process holds the mark. Where neither lock can be had nobody knows: the
  /// answer is false, and the log has a line with the reasons.
  bool anotherRuns() const { return anotherRuns_; }

 private:
  /// Throws Failure when there is no lock to be had, neither by this process nor by another.
  void lock(const std::wstring& path, int flags);

  std::optional<FileDescriptor> locked_;
  bool anotherRuns_ = false;
};

}  // namespace orvane
