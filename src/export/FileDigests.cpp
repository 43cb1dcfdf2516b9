#include "export/FileDigests.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/FileDescriptor.h"
#include "foundation/Sha256.h"
#include "foundation/paths.h"

namespace orvane {
namespace {

constexpr unsigned kMostThreads = 8;
constexpr std::size_t kPiece = 64 << 10;
// A thread for less than this costs more than it saves.
constexpr std::uint64_t kBytesForAThread = 8 << 20;

}  // namespace

FileDigests::FileDigests(std::uint64_t mostWaiting) : mostWaiting_(mostWaiting) {}

FileDigests::~FileDigests() {
  clear();
}

std::uint64_t FileDigests::eighthOfMemory() {
  return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) / 8 *
         static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

void FileDigests::add(std::string path, std::uint64_t bytes) {
  const std::lock_guard lock(mutex_);
  files_.push_back({std::move(path), bytes});
  waiting_ += bytes;
  if (waiting_ > mostWaiting_ && !isReading_) startInBackground();
}

void FileDigests::startInBackground() {
  try {
    background_ = std::async(std::launch::async, [this] {
      read(mostWaiting_ / 2);
      const std::lock_guard lock(mutex_);
      isReading_ = false;
    });
    isReading_ = true;
  } catch (const std::system_error&) {  // no thread can be started; the files wait
  }
}

void FileDigests::drop(std::size_t index) {
  std::unique_lock lock(mutex_);
  if (index >= files_.size()) return;
  File& file = files_[index];
  file.isDropped = true;
  closed_.wait(lock, [&] { return !file.isOpen; });
}

void FileDigests::beginBatch(std::string folder) {
  clear();
  folder_ = std::move(folder);
}

void FileDigests::clear() {
  {
    const std::lock_guard lock(mutex_);
    for (File& file : files_) file.isDropped = true;
  }
  if (background_.valid()) background_.get();
  files_.clear();
  next_ = 0;
  waiting_ = 0;
}

void FileDigests::complete() {
  const std::uint64_t threads = threadsForTheRest();
  std::vector<std::future<void>> helpers;
  try {
    for (std::uint64_t i = 1; i < threads; ++i) {
      helpers.push_back(std::async(std::launch::async, [this] { read(0); }));
    }
  } catch (const std::system_error&) {  // those that could be started are enough
  }
  read(0);
  for (std::future<void>& helper : helpers) helper.get();
  if (background_.valid()) background_.get();
}

std::uint64_t FileDigests::threadsForTheRest() {
  const std::lock_guard lock(mutex_);
  const std::uint64_t files = files_.size() - next_;
  const std::uint64_t cores = std::min(std::thread::hardware_concurrency(), kMostThreads);
  return std::min({cores, files, 1 + waiting_ / kBytesForAThread});
}

// Reads files until no more than `enough` bytes wait.
void FileDigests::read(std::uint64_t enough) {
  while (File* const file = takeNext(enough)) {
    try {
      file->digest = digestOf(*file);
    } catch (const std::exception& failure) {
      file->problem = description(failure);
    }
    const std::lock_guard lock(mutex_);
    file->isOpen = false;
    closed_.notify_all();
  }
}

FileDigests::File* FileDigests::takeNext(std::uint64_t enough) {
  const std::lock_guard lock(mutex_);
  while (next_ < files_.size() && (enough == 0 || waiting_ > enough)) {
    File& file = files_[next_++];
    waiting_ -= file.bytes;
    if (file.isDropped) continue;
    file.isOpen = true;
    return &file;
  }
  return nullptr;
}

std::string FileDigests::digestOf(const File& file) {
  const FileDescriptor opened(pathText(folder_ + "/" + file.path), O_RDONLY | O_NOFOLLOW);
  Sha256 sha256;
  std::uint64_t bytes = 0;
  std::array<std::uint8_t, kPiece> piece;
  while (const std::size_t count =
             opened.read(reinterpret_cast<char*>(piece.data()), piece.size())) {
    if (isDropped(file)) return {};
    sha256.add({piece.data(), count});
    bytes += count;
  }
  if (bytes != file.bytes) throw fileFailure(opened.path(), "the file has changed");
  return sha256.inHexadecimal();
}

bool FileDigests::isDropped(const File& file) {
  const std::lock_guard lock(mutex_);
  return file.isDropped;
}

}  // namespace orvane
