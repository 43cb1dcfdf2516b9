#pragma once

#include <string>

#include "foundation/TemporaryFolder.h"

namespace orvane {

/// A file that is built in a TemporaryFolder and copied to its place when it is complete, for a
/// share on which a file cannot grow.
class StagedFile {
 public:
  /// True if `target` exists, but its file system lets no file be read and written through one
  /// descriptor. gvfs, which mounts what is opened in a file manager, is such a file system.
  static bool isNeededFor(const std::wstring& target);

  /// Begins with a copy of `target`. Throws Failure.
  explicit StagedFile(const std::wstring& target);

  /// The path of the file that is being built.
  const std::wstring& path() const { return path_; }

  /// Replaces `target` by the file, and handles the window's events meanwhile. If this throws
  /// Failure, there is no `target`.
  void copyToTarget() const;

 private:
  std::wstring target_;
  TemporaryFolder folder_;
  std::wstring path_;
};

}  // namespace orvane
