#include "export/WrittenFiles.h"

#include <cerrno>
#include <sys/stat.h>

#include "foundation/Failure.h"
#include "foundation/disk_sync.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

struct stat statusOf(const std::wstring& path) {
  struct stat status {};
  if (stat(nativePath(path).c_str(), &status) != 0) throw systemFailure(errno, path);
  return status;
}

}  // namespace

void WrittenFiles::beginBatch() {
  ++batch_;
  for (auto& [device, disk] : disks_) {
    disk.files.clear();
    disk.folders.clear();
  }
}

void WrittenFiles::addFile(const std::wstring& file) {
  const struct stat status = statusOf(file);
  Disk& disk = diskOf(status.st_dev, file);
  disk.batchOf[status.st_ino] = batch_;
  if (disk.syncsFilesOnly) disk.files.insert(file);
  disk.addFolder(pathText(nativePath(file).parent_path()));
}

void WrittenFiles::addFolder(const std::wstring& folder) {
  diskOf(statusOf(folder).st_dev, folder).addFolder(folder);
}

std::optional<int> WrittenFiles::batchOf(const FileIdentity& file) const {
  const auto disk = disks_.find(file.device);
  if (disk == disks_.end()) return std::nullopt;
  const auto entry = disk->second.batchOf.find(file.inode);
  if (entry == disk->second.batchOf.end()) return std::nullopt;
  return entry->second;
}

void WrittenFiles::bringToDisk() const {
  syncBesideWindow([this] {
    for (const auto& [device, disk] : disks_) disk.sync();
  });
}

WrittenFiles::Disk& WrittenFiles::diskOf(dev_t device, const std::wstring& path) {
  const auto [entry, isNew] = disks_.try_emplace(device);
  if (isNew) entry->second.syncsFilesOnly = syncsFilesOnly(path);
  return entry->second;
}

void WrittenFiles::Disk::addFolder(const std::wstring& folder) {
  if (syncsFilesOnly || folders.empty()) folders.insert(folder);
}

void WrittenFiles::Disk::sync() const {
  for (const std::wstring& file : files) syncEntry(file);
  if (syncsFilesOnly) {
    for (const std::wstring& folder : folders) syncEntry(folder);
  }
  if (!folders.empty()) syncDiskOf(*folders.begin());
}

}  // namespace orvane
