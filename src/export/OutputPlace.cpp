#include "export/OutputPlace.h"

#include <algorithm>

#include "docstore/ScanTree.h"
#include "export/OutputNaming.h"
#include "export/sync_beside_window.h"
#include "foundation/Failure.h"
#include "foundation/mdlFolderAndFile.h"

namespace orvane {

OutputPlace::OutputPlace(const std::wstring& SavePath) : heldPath_(SavePath), held_(SavePath) {}

void OutputPlace::beginBatch(const std::wstring& BatchID) {
  BatchID_ = BatchID;
  written_.beginBatch(BatchID);
}

void OutputPlace::beginFiles(const std::wstring& SavePath, bool hasOwnFolder) {
  SavePath_ = SavePath;
  hasOwnFolder_ = hasOwnFolder;
  batchFolder_ = batchOutputFolder(SavePath, hasOwnFolder, BatchID_);
  checksums_.beginBatch(SavePath, written_.firstOfPass());
}

void OutputPlace::requireFolder() {
  if (SavePath_.empty()) throw Failure(L"成果输出文件夹不能为空！");
  if (heldPath_ != SavePath_) {
    held_ = HeldFolder(SavePath_);
    heldPath_ = SavePath_;
  }
  held_.requireAt(SavePath_);
}

void OutputPlace::replace(const FileIdentity& older, const std::wstring& path) {
  const auto number = written_.replace(older, path);
  if (number) checksums_.takeOut(*number);
}

std::uint64_t OutputPlace::addFile(const std::wstring& file, int pages) {
  const std::uint64_t bytes = written_.addFile(file, pages);
  checksums_.add(file, bytes);
  return bytes;
}

// A folder that was created also changed the folder above it.
void OutputPlace::addFolders() {
  written_.addFolder(SavePath_);
  if (hasOwnFolder_) written_.addFolder(batchFolder_);
}

WrittenFiles::Finding OutputPlace::leftovers() const {
  if (!hasOwnFolder_) return {};
  return written_.notWrittenIn(batchFolder_);
}

void OutputPlace::bringToDisk() {
  syncBesideWindow([this] { written_.bringToDisk(); }, [this] { checksums_.complete(); });
  requireFolder();
}

// The folder of a failed batch.

bool OutputPlace::abandonBatch(const ScansOfBatch& scans) {
  checksums_.dropBatch();
  if (!hasOwnFolder_ || !held_.isAt(SavePath_)) return false;
  requireNoFileOfAnotherBatch();
  bool isDeleted = false;
  const auto gone =
      written_.forgetDeleted(batchFolder_, [&] { isDeleted = deleteBatchFolder(scans); });
  for (const WrittenFiles::Number number : gone) checksums_.takeOut(number);
  return isDeleted;
}

// On a disk that ignores letter case, two batches can have the same folder.
void OutputPlace::requireNoFileOfAnotherBatch() const {
  const WrittenFiles::Finding others = written_.ofOtherBatchesIn(batchFolder_);
  if (others.count == 0) return;
  throw Failure(L"输出文件夹里有本次导出的档案【" + others.batch + L"】的文件，不删除：" +
                batchFolder_);
}

bool OutputPlace::deleteBatchFolder(const ScansOfBatch& scans) const {
  if (!isFolderName(BatchID_)) throw Failure(L"批次名不能作文件夹名，不删除：" + BatchID_);
  scans.requireDeletable(batchFolder_);
  requireStoredSpelling();
  return mdlFolderAndFile::FolderDelete(batchFolder_);
}

// A folder that is stored under another spelling of the batch's name is another batch's, on a disk
// that ignores letter case. Only a listing has the stored spelling.
void OutputPlace::requireStoredSpelling() const {
  FileSystemObject& files = mdlFolderAndFile::fileSystem();
  if (!files.FolderExists(batchFolder_)) return;
  const std::vector<std::wstring> stored = files.SubFolders(SavePath_);
  if (!std::binary_search(stored.begin(), stored.end(), BatchID_)) {
    throw Failure(L"输出文件夹在磁盘上的名字与批次名写法不同，可能是另一批的，不删除：" +
                  batchFolder_);
  }
}

}  // namespace orvane
