#pragma once

#include <cstdint>
#include <ctime>
#include <sys/stat.h>

namespace orvane {

/// The identity of a file, whatever its name.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

inline FileIdentity identityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino};
}

/// A time of a file as the file system stores it.
struct FileTime {
  std::time_t seconds = 0;
  long nanoseconds = 0;
  bool operator==(const FileTime&) const = default;

  bool isAfter(const FileTime& other) const {
    return seconds != other.seconds ? seconds > other.seconds : nanoseconds > other.nanoseconds;
  }
};

inline FileTime fileTime(const timespec& time) {
  return {time.tv_sec, time.tv_nsec};
}

/// The identity and state of a file, to detect that another program has changed or replaced it.
struct FileState {
  FileIdentity identity;
  std::uint64_t size = 0;
  FileTime modified;
  FileTime changed;  ///< also its owner, its mode or its links
  bool operator==(const FileState&) const = default;
};

inline FileState stateOf(const struct stat& status) {
  return {identityOf(status), static_cast<std::uint64_t>(status.st_size), fileTime(status.st_mtim),
          fileTime(status.st_ctim)};
}

}  // namespace orvane
