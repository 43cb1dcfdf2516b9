#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_set>
#include <vector>

#include "export/FileDigests.h"
#include "export/WrittenFiles.h"

namespace orvane {

/// The checksums of what one run has delivered, in a file beside its report that ends in ".sha256".
/// It has the form of sha256sum: a line for each file, with its path relative to the output folder,
/// in the bytes that are on the disk. `sha256sum -c` in the output folder checks the delivery.
///
/// The files of a batch are added when the batch has succeeded. At the end of the run, those that
/// were replaced or deleted later are taken out. A run that has delivered no file has no list. If
/// the output folder changes between two batches, the second one has a list ".2.sha256", and so on.
class ChecksumList {
 public:
  using Number = WrittenFiles::Number;

  /// Begins a batch, or another pass over one. Its first file will have the number `first`.
  void beginBatch(const std::wstring& outputFolder, Number first);

  /// Adds the next file of the batch, which was completely written.
  void add(const std::wstring& file, std::uint64_t bytes);

  /// Takes out a file that is about to be replaced or was deleted.
  void takeOut(Number number);

  /// Drops the files of the batch, which has failed. They may be deleted after that.
  void dropBatch() { digests_.clear(); }

  /// Makes the checksums of the batch. May be called on any thread, but nothing else may be called
  /// meanwhile.
  void complete() { digests_.complete(); }

  /// Writes the files of the batch, which has succeeded, to the list beside `report`. If some are
  /// missing in it then, returns the reason. Throws nothing.
  std::wstring deliverBatch(const std::wstring& report);

  /// Takes the files out that are not there any more. A failure is logged.
  void endRun();

 private:
  /// Files that have a line in the list, one after the other.
  struct Lines {
    Number first, end;
  };

  /// The list of one output folder.
  struct List {
    std::filesystem::path outputFolder;
    std::wstring file{};     // empty before the first delivery
    std::uint64_t size = 0;  // of the file
    std::vector<Lines> lines{};
    std::unordered_set<Number> takenOut{};  // of those that have a line

    bool has(Number number) const;
    void rewrite() const;
  };

  List& list() { return lists_[current_]; }
  std::wstring listBeside(const std::wstring& report) const;
  std::wstring writeBatch(const std::wstring& report);

  FileDigests digests_;  // of this batch
  Number first_ = 0;
  std::vector<List> lists_;
  std::size_t current_ = 0;  // the list of this batch
};

}  // namespace orvane
