#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <future>
#include <mutex>
#include <string>

namespace orvane {

/// The SHA-256 digests of the files of one batch, made by other threads.
///
/// While a batch is exported, its pages need all cores, so the files wait for its end: then the
/// disk is written, and the cores are idle. They do not wait until they must be read from the disk:
/// when the files that wait exceed a limit, a thread begins with the oldest ones.
class FileDigests {
 public:
  struct File {
    std::string path;  ///< relative to the folder
    std::uint64_t bytes = 0;
    bool isDropped = false;
    bool isOpen = false;
    std::string digest{};    ///< in hexadecimal; empty if there is none
    std::wstring problem{};  ///< why the file could not be read
  };

  /// @param mostWaiting  how many bytes may wait; an eighth of the memory, which is very likely
  ///                     still in the system's cache.
  explicit FileDigests(std::uint64_t mostWaiting = eighthOfMemory());
  ~FileDigests();
  FileDigests(const FileDigests&) = delete;
  FileDigests& operator=(const FileDigests&) = delete;

  /// Adds a file that was completely written.
  void add(std::string path, std::uint64_t bytes);

  /// Drops the file with this index, which is about to be deleted. No thread has it open then: a
  /// file that is deleted while it is open keeps a hidden name on some file systems.
  void drop(std::size_t index);

  /// Drops all files. Those of the next batch are in the folder with this native path.
  void beginBatch(std::string folder);

  /// Drops all files. No thread has one open after that.
  void clear();

  /// Makes the digests that are still missing, and returns when all are there. Several threads
  /// read. May be called on any thread, but nothing else may be called meanwhile.
  void complete();

  /// The files in the order in which they were added, after `complete` or `clear`.
  const std::deque<File>& files() const { return files_; }

 private:
  static std::uint64_t eighthOfMemory();
  std::uint64_t threadsForTheRest();
  File* takeNext(std::uint64_t enough);
  void read(std::uint64_t enough);
  std::string digestOf(const File& file);
  bool isDropped(const File& file);
  void startInBackground();

  std::string folder_;
  const std::uint64_t mostWaiting_;
  std::mutex mutex_;  // of everything below
  std::condition_variable closed_;
  std::deque<File> files_;
  std::size_t next_ = 0;  // nobody has taken this file and those after it
  std::uint64_t waiting_ = 0;
  bool isReading_ = false;  // in the background
  std::future<void> background_;
};

}  // namespace orvane
