#include "export/WrittenFiles.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/durable_file.h"
#include "foundation/paths.h"
#include "foundation/plain_text.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

struct stat statusOf(const std::wstring& path) {
  struct stat status {};
  if (stat(nativePath(path).c_str(), &status) != 0) throw systemFailure(errno, path);
  return status;
}

std::size_t hashOf(const fs::path& file) {
  return hash_value(file.lexically_normal());
}

std::wstring inCapitals(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(), upperCase);
  return text;
}

// Output names end in a lower-case extension. If the name in capitals leads to the same file, the
// file system ignores letter case.
bool diskKnowsLetterCase(const std::wstring& file, const struct stat& status) {
  const std::size_t name = file.find_last_of(L"\\/") + 1;
  const std::wstring twin = file.substr(0, name) + inCapitals(file.substr(name));
  struct stat found {};
  return lstat(nativePath(twin).c_str(), &found) != 0 || found.st_size != status.st_size ||
         found.st_mtim.tv_sec != status.st_mtim.tv_sec ||
         found.st_mtim.tv_nsec != status.st_mtim.tv_nsec;
}

// Calls `visit` with the path of every file below a folder that may not exist.
template <typename Visit>
void visitFiles(const std::wstring& folder, Visit visit) {
  std::error_code error, ignored;
  const fs::path root = fs::path(nativePath(folder)).lexically_normal();
  for (fs::recursive_directory_iterator entry(root, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!fs::is_directory(entry->symlink_status(ignored))) visit(entry->path());
  }
  if (error && error != std::errc::no_such_file_or_directory) {
    throw systemFailure(error.value(), folder);
  }
}

}  // namespace

void WrittenFiles::beginBatch(const std::wstring& BatchID) {
  // Search from the end: a batch that has failed is usually the next one again.
  std::ptrdiff_t number = std::ssize(batches_) - 1;
  while (number >= 0 && batches_[number] != BatchID) --number;
  if (number < 0) {
    number = std::ssize(batches_);
    batches_.push_back(BatchID);
  }
  now_ = {static_cast<int>(number), now_.pass + 1};
  replaced_ = {};
  filesOfPass_.clear();
  namesOfPass_.clear();
  for (auto& [device, disk] : disks_) {
    disk.files.clear();
    disk.folders.clear();
  }
}

std::uint64_t WrittenFiles::addFile(const std::wstring& file) {
  const struct stat status = statusOf(file);
  Disk& disk = diskOf(status.st_dev, file);
  if (!disk.knowsLetterCase) disk.knowsLetterCase = diskKnowsLetterCase(file, status);
  const Key key = disk.keyOf({status.st_dev, status.st_ino}, file);
  disk.writerOf[key] = now_;
  filesOfPass_.emplace_back(status.st_dev, key);
  namesOfPass_.insert(hashOf(nativePath(file)));
  if (disk.syncsFilesOnly) disk.files.insert(file);
  disk.addFolder(pathText(fs::path(nativePath(file)).parent_path()));
  return static_cast<std::uint64_t>(status.st_size);
}

void WrittenFiles::addFolder(const std::wstring& folder) {
  diskOf(statusOf(folder).st_dev, folder).addFolder(folder);
}

void WrittenFiles::replace(const FileIdentity& older, const std::wstring& path) {
  const std::optional<Writer> writer = writerOf(older, path);
  if (!writer) return;
  Disk& disk = disks_[older.device];
  disk.writerOf.erase(disk.keyOf(older, path));
  if (writer->batch == now_.batch && writer->pass != now_.pass) return;
  if (replaced_.count++ > 0) return;
  replaced_.first = path;
  replaced_.batch = batches_[writer->batch];
}

WrittenFiles::Finding WrittenFiles::notWrittenIn(const std::wstring& folder) const {
  Finding finding;
  visitFiles(folder, [&](const fs::path& native) {
    if (isOfThisPass(native)) return;
    const std::wstring file = pathText(native);
    if (finding.count++ == 0 || file < finding.first) finding.first = file;
  });
  return finding;
}

WrittenFiles::Finding WrittenFiles::ofOtherBatchesIn(const std::wstring& folder) const {
  Finding finding;
  visitFiles(folder, [&](const fs::path& native) {
    const std::optional<Writer> writer = writerOf(native);
    if (!writer || writer->batch == now_.batch || finding.count++ > 0) return;
    finding.first = pathText(native);
    finding.batch = batches_[writer->batch];
  });
  return finding;
}

// The file system may list a name in another spelling, so the file's identity is compared as well.
bool WrittenFiles::isOfThisPass(const fs::path& file) const {
  return namesOfPass_.contains(hashOf(file)) || writerOf(file) == now_;
}

std::optional<WrittenFiles::Writer> WrittenFiles::writerOf(const fs::path& file) const {
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) return std::nullopt;
  return writerOf(identityOf(status), pathText(file));
}

std::optional<WrittenFiles::Writer> WrittenFiles::writerOf(const FileIdentity& file,
                                                           const std::wstring& path) const {
  const auto disk = disks_.find(file.device);
  if (disk == disks_.end()) return std::nullopt;
  const auto entry = disk->second.writerOf.find(disk->second.keyOf(file, path));
  if (entry == disk->second.writerOf.end()) return std::nullopt;
  return entry->second;
}

void WrittenFiles::forgetBatch() {
  for (const auto& [device, key] : std::exchange(filesOfPass_, {})) {
    disks_[device].writerOf.erase(key);
  }
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

WrittenFiles::Key WrittenFiles::Disk::keyOf(const FileIdentity& file,
                                            const std::wstring& path) const {
  return knowsLetterCase.value_or(true) ? file.inode : hashOf(nativePath(inCapitals(path)));
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
