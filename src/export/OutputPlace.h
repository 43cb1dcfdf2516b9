#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "export/ChecksumList.h"
#include "export/ScanTreeGuard.h"
#include "export/WrittenFiles.h"
#include "foundation/FileState.h"

namespace orvane {

/// Where a run writes: its output folder, which is held open, the files that it has written there,
/// and the checksums of those that it has delivered.
class OutputPlace {
 public:
  /// Throws Failure if `SavePath` is not a folder.
  explicit OutputPlace(const std::wstring& SavePath);

  /// Begins a batch, or another pass over a batch that has failed.
  void beginBatch(const std::wstring& BatchID);

  /// The files of the batch go to `SavePath`, and there to a folder of the batch's own or not.
  void beginFiles(const std::wstring& SavePath, bool hasOwnFolder);

  /// The folder above those of the documents.
  const std::wstring& batchFolder() const { return batchFolder_; }

  /// Throws Failure if another folder has replaced the output folder. One that the operator has
  /// chosen since the last batch is held from now on.
  void requireFolder();

  /// The batch is about to replace the file `older` at `path`.
  void replace(const FileIdentity& older, const std::wstring& path);

  /// The batch has written a file. Returns its size in bytes. Throws Failure if it does not exist.
  std::uint64_t addFile(const std::wstring& file, int pages);

  /// The batch has written a document, for which folders may have been created. Throws Failure if
  /// they do not exist.
  void addFolders();

  /// The files of this run that the batch has replaced, see `WrittenFiles::replaced`.
  const WrittenFiles::Finding& replaced() const { return written_.replaced(); }

  /// The files in the batch's own folder, if it has one, that it has not written. Throws Failure if
  /// the folder cannot be listed.
  WrittenFiles::Finding leftovers() const;

  /// Drops what the failed batch has written, and deletes its own folder, if it has one and the
  /// output folder is still in its place. Throws Failure, with a reason for the operator, for a
  /// folder that is kept: one that `scans` refuses, and one that may be another batch's. A failure
  /// of the deletion itself is silent. Returns true if the folder existed and was deleted.
  bool abandonBatch(const ScansOfBatch& scans);

  /// Syncs what the batch wrote, makes its checksums, and handles the window's events meanwhile.
  /// Throws Failure if something could not be written or the output folder is not in its place.
  void bringToDisk();

  /// Writes the checksums of the batch, which has succeeded, beside `report`. If some are missing
  /// then, returns the reason.
  std::wstring deliverBatch(const std::wstring& report) { return checksums_.deliverBatch(report); }

  /// What is left of the files of this pass.
  const OutputSum& ofPass() const { return written_.ofPass(); }

  /// What is left of each batch of the run, in the order in which they began.
  std::vector<WrittenFiles::Left> left() const { return written_.left(); }

  /// Takes the checksums of files that are not there any more out. A failure is logged.
  void endRun() { checksums_.endRun(); }

 private:
  void requireNoFileOfAnotherBatch() const;
  void requireStoredSpelling() const;
  bool deleteBatchFolder(const ScansOfBatch& scans) const;

  std::wstring heldPath_;  // the path that `held_` was opened under
  HeldFolder held_;
  WrittenFiles written_;
  ChecksumList checksums_;
  std::wstring BatchID_;
  std::wstring SavePath_;  // of this batch
  std::wstring batchFolder_;
  bool hasOwnFolder_ = false;
};

}  // namespace orvane
