#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "foundation/FileDescriptor.h"

namespace orvane {

/// A private folder for temporary files, which the destructor removes. What a killed process has
/// left is removed when the next folder is created in the same place.
class TemporaryFolder {
 public:
  /// On a local disk: in `TMPDIR` or, if that is not set, in /var/tmp, because /tmp can be in
  /// memory. Throws Failure.
  TemporaryFolder();
  /// In the existing folder `parent`, a path text. Throws Failure.
  explicit TemporaryFolder(const std::wstring& parent);
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// The path text of the folder.
  std::wstring path() const;

 private:
  std::filesystem::path native_;
  std::optional<FileDescriptor> lock_;  ///< tells other processes that the folder is in use
};

}  // namespace orvane
