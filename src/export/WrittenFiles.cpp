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

// Output names end in a lower-case extension. If the name in capitals leads to the same file, the
// file system ignores letter case.
bool diskKnowsLetterCase(const std::wstring& file, const struct stat& status) {
  const std::size_t name = file.find_last_of(L"\\/") + 1;
  const std::wstring twin = file.substr(0, name) + upperCase(file.substr(name));
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

OutputSum& OutputSum::operator+=(const OutputSum& more) {
  pages += more.pages;
  files += more.files;
  bytes += more.bytes;
  return *this;
}

OutputSum& OutputSum::operator-=(const OutputSum& less) {
  pages -= less.pages;
  files -= less.files;
  bytes -= less.bytes;
  return *this;
}

void WrittenFiles::beginBatch(const std::wstring& BatchID) {
  // Search from the end: a batch that has failed is usually the next one again.
  std::ptrdiff_t number = std::ssize(batches_) - 1;
  while (number >= 0 && batches_[number].name != BatchID) --number;
  if (number < 0) {
    number = std::ssize(batches_);
    batches_.push_back({BatchID});
  }
  if (!passes_.empty() && ofPass().files == 0) passes_.erase(first_);
  first_ = next_;
  passes_.insert_or_assign(first_, Pass{static_cast<int>(number)});
  batches_[number].lastPass = first_;
  replaced_ = {};
  namesOfPass_.clear();
  for (auto& [device, disk] : disks_) {
    disk.files.clear();
    disk.folders.clear();
  }
}

std::uint64_t WrittenFiles::addFile(const std::wstring& file, int pages) {
  const struct stat status = statusOf(file);
  Disk& disk = diskOf(status.st_dev, file);
  if (!disk.knowsLetterCase) disk.knowsLetterCase = diskKnowsLetterCase(file, status);
  const Key key = disk.keyOf({status.st_dev, status.st_ino}, file);
  disk.records[key] = {next_++, pages};
  namesOfPass_.insert(hashOf(nativePath(file)));
  if (disk.syncsFilesOnly) disk.files.insert(file);
  disk.addFolder(pathText(fs::path(nativePath(file)).parent_path()));
  const auto bytes = static_cast<std::uint64_t>(status.st_size);
  passes_.at(first_).left += {pages, 1, bytes};
  return bytes;
}

void WrittenFiles::addFolder(const std::wstring& folder) {
  diskOf(statusOf(folder).st_dev, folder).addFolder(folder);
}

std::optional<WrittenFiles::Number> WrittenFiles::replace(const FileIdentity& older,
                                                          const std::wstring& path) {
  const Record* const record = recordOf(older, path);
  if (record == nullptr) return std::nullopt;
  const int writer = passOf(record->number()).batch;
  const bool isOfEarlierPass = record->number() < first_ && writer == passes_.at(first_).batch;
  if (!isOfEarlierPass && replaced_.count++ == 0) {
    replaced_.first = path;
    replaced_.batch = batches_[writer].name;
  }
  struct stat status {};  // all zero if somebody else has just removed the file
  lstat(nativePath(path).c_str(), &status);
  return take(older, path, static_cast<std::uint64_t>(status.st_size));
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
    const Record* const record = recordOf(native);
    if (record == nullptr) return;
    const int writer = passOf(record->number()).batch;
    if (writer == passes_.at(first_).batch || finding.count++ > 0) return;
    finding.first = pathText(native);
    finding.batch = batches_[writer].name;
  });
  return finding;
}

// The file system may list a name in another spelling, so the file's identity is compared as well.
bool WrittenFiles::isOfThisPass(const fs::path& file) const {
  if (namesOfPass_.contains(hashOf(file))) return true;
  const Record* const record = recordOf(file);
  return record != nullptr && record->number() >= first_;
}

const WrittenFiles::Record* WrittenFiles::recordOf(const fs::path& file) const {
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) return nullptr;
  return recordOf(identityOf(status), pathText(file));
}

const WrittenFiles::Record* WrittenFiles::recordOf(const FileIdentity& file,
                                                   const std::wstring& path) const {
  const auto disk = disks_.find(file.device);
  if (disk == disks_.end()) return nullptr;
  const auto entry = disk->second.records.find(disk->second.keyOf(file, path));
  return entry == disk->second.records.end() ? nullptr : &entry->second;
}

std::vector<WrittenFiles::Number> WrittenFiles::forgetDeleted(
    const std::wstring& folder, const std::function<void()>& deletion) {
  std::vector<std::pair<fs::path, struct stat>> files;
  visitFiles(folder, [&](const fs::path& native) {
    struct stat status {};
    if (recordOf(native) == nullptr || lstat(native.c_str(), &status) != 0) return;
    files.emplace_back(native, status);
  });
  deletion();
  std::vector<Number> gone;
  for (const auto& [native, status] : files) {
    struct stat now {};
    if (lstat(native.c_str(), &now) == 0) continue;
    gone.push_back(take(identityOf(status), pathText(native), status.st_size));
  }
  return gone;
}

// Removes the record of a file.
WrittenFiles::Number WrittenFiles::take(const FileIdentity& file, const std::wstring& path,
                                        std::uint64_t bytes) {
  Disk& disk = disks_.at(file.device);
  const auto entry = disk.records.find(disk.keyOf(file, path));
  const Record record = entry->second;
  disk.records.erase(entry);
  const auto pass = std::prev(passes_.upper_bound(record.number()));
  Batch& batch = batches_[pass->second.batch];
  const int taker = passes_.at(first_).batch;
  if (batch.takenBy < 0 && pass->second.batch != taker) batch.takenBy = taker;
  pass->second.left -= {record.pages(), 1, bytes};
  if (pass->second.left.files == 0 && pass->first != first_) passes_.erase(pass);
  return record.number();
}

std::vector<WrittenFiles::Left> WrittenFiles::left() const {
  std::vector<Left> batches;
  for (const Batch& batch : batches_) {
    const auto lastPass = passes_.find(batch.lastPass);
    batches.push_back({batch.name,
                       {},
                       lastPass == passes_.end() ? OutputSum{} : lastPass->second.left,
                       batch.takenBy < 0 ? L"" : batches_[batch.takenBy].name});
  }
  for (const auto& [first, pass] : passes_) {
    OutputSum& all = batches[pass.batch].all;
    all = {all.pages + pass.left.pages, all.files + pass.left.files, all.bytes + pass.left.bytes};
  }
  return batches;
}

void WrittenFiles::bringToDisk() const {
  for (const auto& [device, disk] : disks_) disk.sync();
}

WrittenFiles::Disk& WrittenFiles::diskOf(dev_t device, const std::wstring& path) {
  const auto [entry, isNew] = disks_.try_emplace(device);
  if (isNew) entry->second.syncsFilesOnly = syncsFilesOnly(path);
  return entry->second;
}

WrittenFiles::Key WrittenFiles::Disk::keyOf(const FileIdentity& file,
                                            const std::wstring& path) const {
  return knowsLetterCase.value_or(true) ? file.inode : hashOf(nativePath(upperCase(path)));
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
