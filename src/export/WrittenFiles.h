#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "foundation/FileDescriptor.h"

namespace orvane {

/// What a run has written: every file, with the batch that wrote it; and of the batch under way all
/// that has to reach a disk before its new state may be recorded.
///
/// A file is known by device and inode. On a disk that knows no letter case it is known by its name
/// without it: exFAT gives no inodes of its own, and what stands for them changes with the
/// spelling.
class WrittenFiles {
 public:
  /// Files that are worth a line in the log.
  struct Finding {
    std::size_t count = 0;
    std::wstring first;  ///< the path of one of them
    std::wstring batch;  ///< the batch that had written that one, if a batch of this run did
  };

  /// Begins the next batch, or the next pass over one that has failed.
  void beginBatch(const std::wstring& BatchID);

  /// Notes that the batch is about to write to `path`, and `older` stands there.
  void replace(const FileIdentity& older, const std::wstring& path);

  /// Notes a file that the batch has just written; its size in bytes. Throws Failure when it is not
  /// there.
  std::uint64_t addFile(const std::wstring& file);

  /// Notes a folder that holds what the batch wrote. Throws Failure when it is not there.
  void addFolder(const std::wstring& folder);

  /// The files of this run that the batch has written over: those of other batches, and its own of
  /// this pass. What an earlier pass over the batch left does not count.
  const Finding& replaced() const { return replaced_; }

  /// The files below a folder that the batch has not written in this pass. Throws Failure when the
  /// folder cannot be listed; one that is not there holds none.
  Finding notWrittenIn(const std::wstring& folder) const;

  /// Forgets the files of the batch: they have been deleted.
  void forgetBatch();

  /// Returns once everything that the batch wrote is on its disk. The window's events are handled
  /// meanwhile. Throws Failure when something could not be written.
  void bringToDisk() const;

 private:
  struct Writer {
    int batch;  // from 0, in the order of `batches_`
    int pass;
    bool operator==(const Writer&) const = default;
  };

  using Key = std::uint64_t;  // an inode, or the hash of a name

  struct Disk {
    bool syncsFilesOnly = false;
    std::optional<bool> knowsLetterCase;  // not asked for before there is a file to ask with
    std::set<std::wstring> files;         // of this batch; kept only when each is synced itself
    std::set<std::wstring> folders;       // of this batch; one is enough when it is not
    std::unordered_map<Key, Writer> writerOf;

    Key keyOf(const FileIdentity& file, const std::wstring& path) const;
    void addFolder(const std::wstring& folder);
    void sync() const;
  };

  Disk& diskOf(dev_t device, const std::wstring& path);
  std::optional<Writer> writerOf(const FileIdentity& file, const std::wstring& path) const;
  bool isOfThisPass(const std::filesystem::path& file) const;

  std::vector<std::wstring> batches_;
  Writer now_{};
  std::map<dev_t, Disk> disks_;
  std::vector<std::pair<dev_t, Key>> filesOfPass_;
  std::unordered_set<std::size_t> namesOfPass_;  // hashes: a batch may have many long paths
  Finding replaced_;
};

}  // namespace orvane
