#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <unordered_map>

namespace orvane {

/// Which file stands under a name.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

/// What a run has written: every file, known by device and inode, with the batch that wrote it; and
/// of the batch under way all that has to reach a disk before its new state may be recorded.
class WrittenFiles {
 public:
  /// Begins the next batch, or the next pass over the same one. What the last one wrote keeps its
  /// number.
  void beginBatch();

  /// The number of the batch under way: 1 for the first of the run.
  int batch() const { return batch_; }

  /// Notes a file that the batch has just written. Throws Failure when it is not there.
  void addFile(const std::wstring& file);

  /// Notes a folder that holds what the batch wrote. Throws Failure when it is not there.
  void addFolder(const std::wstring& folder);

  /// The number of the batch that wrote the file; nothing when this run did not.
  std::optional<int> batchOf(const FileIdentity& file) const;

  /// Returns once everything that the batch wrote is on its disk. The window's events are handled
  /// meanwhile. Throws Failure when something could not be written.
  void bringToDisk() const;

 private:
  struct Disk {
    bool syncsFilesOnly = false;
    std::set<std::wstring> files;    // of this batch; kept only when each is synced itself
    std::set<std::wstring> folders;  // of this batch; one is enough when it is not
    std::unordered_map<ino_t, int> batchOf;

    void addFolder(const std::wstring& folder);
    void sync() const;
  };

  Disk& diskOf(dev_t device, const std::wstring& path);

  int batch_ = 0;
  std::map<dev_t, Disk> disks_;
};

}  // namespace orvane
