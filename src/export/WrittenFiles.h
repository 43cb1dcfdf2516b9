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

/// The files that a run has written, each with the batch that wrote it. For the current batch, also
/// what must be synced before its new state may be recorded.
///
/// A file is identified by device and inode. On a file system that ignores letter case it is
/// identified by its name in capitals: exFAT has no inodes, and the numbers that replace them
/// change with the spelling of the name.
class WrittenFiles {
 public:
  /// Files that deserve a line in the log.
  struct Finding {
    std::size_t count = 0;
    std::wstring first;  ///< the path of one of them
    std::wstring batch;  ///< the batch of this run that had written `first`, if any
  };

  /// Begins a batch, or another pass over a batch that has failed.
  void beginBatch(const std::wstring& BatchID);

  /// Records that the batch is about to replace the file `older` at `path`.
  void replace(const FileIdentity& older, const std::wstring& path);

  /// Records a file that the batch has just written, and returns its size in bytes. Throws Failure
  /// if it does not exist.
  std::uint64_t addFile(const std::wstring& file);

  /// Records a folder that the batch has written to. Throws Failure if it does not exist.
  void addFolder(const std::wstring& folder);

  /// The files of this run that the batch has replaced: those of other batches, and its own of this
  /// pass. Files of an earlier pass over the same batch do not count.
  const Finding& replaced() const { return replaced_; }

  /// The files below a folder that the batch has not written in this pass; none if the folder does
  /// not exist. Throws Failure if the folder cannot be listed.
  Finding notWrittenIn(const std::wstring& folder) const;

  /// The files below a folder that other batches of this run have written. As `notWrittenIn`.
  Finding ofOtherBatchesIn(const std::wstring& folder) const;

  /// Forgets the files of the batch, after they were deleted.
  void forgetBatch();

  /// Syncs everything that the batch wrote, and handles the window's events meanwhile. Throws
  /// Failure if something could not be written.
  void bringToDisk() const;

 private:
  struct Writer {
    int batch;  // an index of `batches_`
    int pass;
    bool operator==(const Writer&) const = default;
  };

  using Key = std::uint64_t;  // an inode number, or the hash of a name

  struct Disk {
    bool syncsFilesOnly = false;          // each file must be synced by itself
    std::optional<bool> knowsLetterCase;  // unknown until there is a file to test it with
    std::set<std::wstring> files;         // of this batch; only if `syncsFilesOnly`
    std::set<std::wstring> folders;       // of this batch; only one unless `syncsFilesOnly`
    std::unordered_map<Key, Writer> writerOf;

    Key keyOf(const FileIdentity& file, const std::wstring& path) const;
    void addFolder(const std::wstring& folder);
    void sync() const;
  };

  Disk& diskOf(dev_t device, const std::wstring& path);
  std::optional<Writer> writerOf(const FileIdentity& file, const std::wstring& path) const;
  std::optional<Writer> writerOf(const std::filesystem::path& file) const;
  bool isOfThisPass(const std::filesystem::path& file) const;

  std::vector<std::wstring> batches_;
  Writer now_{};
  std::map<dev_t, Disk> disks_;
  std::vector<std::pair<dev_t, Key>> filesOfPass_;
  std::unordered_set<std::size_t> namesOfPass_;  // hashes, because paths can be many and long
  Finding replaced_;
};

}  // namespace orvane
