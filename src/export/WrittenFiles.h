#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
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
#include "foundation/FileState.h"

namespace orvane {

/// What was written, or is left of it.
struct OutputSum {
  std::int64_t pages = 0;
  std::int64_t files = 0;
  std::uint64_t bytes = 0;

  OutputSum& operator+=(const OutputSum& more);
  OutputSum& operator-=(const OutputSum& less);
  bool operator==(const OutputSum&) const = default;
};

/// The files that a run has written and that are still there, each with the batch that wrote it.
/// For the current batch, also what must be synced before its new state may be recorded.
///
/// A file is identified by device and inode. On a file system that ignores letter case it is
/// identified by its name in capitals: exFAT has no inodes, and the numbers that replace them
/// change with the spelling of the name.
class WrittenFiles {
 public:
  /// The number of a file: 0 for the first one that the run has written.
  using Number = std::uint64_t;

  /// Files that deserve a line in the log.
  struct Finding {
    std::size_t count = 0;
    std::wstring first;  ///< the path of one of them
    std::wstring batch;  ///< the batch of this run that had written `first`, if any
  };

  /// What is left of the files of a batch.
  struct Left {
    std::wstring batch;
    OutputSum all;         ///< of all passes over the batch
    OutputSum lastPass;    ///< of the last one
    std::wstring takenBy;  ///< the first other batch that replaced or deleted one, if any
  };

  /// Begins a batch, or another pass over a batch that has failed.
  void beginBatch(const std::wstring& BatchID);

  /// Records that the batch is about to replace the file `older` at `path`. Returns its number if
  /// this run has written it.
  std::optional<Number> replace(const FileIdentity& older, const std::wstring& path);

  /// Records a file that the batch has just written, and returns its size in bytes. Throws Failure
  /// if it does not exist.
  std::uint64_t addFile(const std::wstring& file, int pages);

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

  /// Runs `deletion`, which deletes files below `folder`. Forgets those that are gone after it, and
  /// returns their numbers. Throws Failure if the folder cannot be listed.
  std::vector<Number> forgetDeleted(const std::wstring& folder,
                                    const std::function<void()>& deletion);

  /// The number of the first file of this pass, if there is one.
  Number firstOfPass() const { return first_; }

  /// What is left of the files of this pass.
  const OutputSum& ofPass() const { return passes_.at(first_).left; }

  /// What is left of each batch of the run, in the order in which they began.
  std::vector<Left> left() const;

  /// Syncs everything that the batch wrote. May be called on any thread, but nothing else may be
  /// called meanwhile. Throws Failure if something could not be written.
  void bringToDisk() const;

 private:
  /// The number of a file and its pages, in 8 bytes.
  class Record {
   public:
    Record() = default;
    Record(Number number, int pages)
        : bits_(number << kBitsOfPages | static_cast<std::uint16_t>(pages)) {}

    Number number() const { return bits_ >> kBitsOfPages; }
    int pages() const { return static_cast<std::uint16_t>(bits_); }

   private:
    static constexpr int kBitsOfPages = 16;  // a document has up to 32,767

    std::uint64_t bits_ = 0;
  };

  struct Pass {
    int batch;  // an index of `batches_`
    OutputSum left{};
  };

  struct Batch {
    std::wstring name;
    Number lastPass = 0;
    int takenBy = -1;  // an index of `batches_`
  };

  using Key = std::uint64_t;  // an inode number, or the hash of a name

  struct Disk {
    bool syncsFilesOnly = false;          // each file must be synced by itself
    std::optional<bool> knowsLetterCase;  // unknown until there is a file to test it with
    std::set<std::wstring> files;         // of this batch; only if `syncsFilesOnly`
    std::set<std::wstring> folders;       // of this batch; only one unless `syncsFilesOnly`
    std::unordered_map<Key, Record> records;

    Key keyOf(const FileIdentity& file, const std::wstring& path) const;
    void addFolder(const std::wstring& folder);
    void sync() const;
  };

  Disk& diskOf(dev_t device, const std::wstring& path);
  const Record* recordOf(const FileIdentity& file, const std::wstring& path) const;
  const Record* recordOf(const std::filesystem::path& file) const;
  const Pass& passOf(Number number) const { return std::prev(passes_.upper_bound(number))->second; }
  bool isOfThisPass(const std::filesystem::path& file) const;
  Number take(const FileIdentity& file, const std::wstring& path, std::uint64_t bytes);

  std::vector<Batch> batches_;
  std::map<Number, Pass> passes_;  // by the first number; only those with files, and this one
  Number first_ = 0, next_ = 0;    // of this pass; of the run
  std::map<dev_t, Disk> disks_;
  std::unordered_set<std::size_t> namesOfPass_;  // hashes, because paths can be many and long
  Finding replaced_;
};

}  // namespace orvane
