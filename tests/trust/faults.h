#pragma once

/// System calls of an export that fail, or end the process, when a test says so. The library stands
/// in front of the C library, linked to a test or preloaded into a program. Only files below one
/// folder are watched, and allocations of 64 KiB and more.
namespace orvane::test {

enum CallKind : unsigned {
  kWrite = 1,     ///< write, pwrite, pwritev
  kOpen = 2,      ///< open, openat, opendir
  kRename = 4,    ///< rename
  kSync = 8,      ///< fsync, fdatasync, syncfs
  kClose = 16,    ///< close of a file that was opened for writing
  kResize = 32,   ///< ftruncate
  kMemory = 64,   ///< malloc, calloc, realloc
  kFolder = 128,  ///< mkdir
  kRemove = 256,  ///< unlink, unlinkat
  kThread = 512,  ///< pthread_create
  kOwner = 1024,  ///< fchmod, fchown
  kFuse = 2048,   ///< none, but the folder claims to be in a file system in user space
  kAll = 511,
  kAllButMemory = kAll - kMemory,
};

enum class Fault {
  None,        ///< only counts
  Fail,        ///< call number `at` fails
  FailOnward,  ///< it and every later one fails, as on a full disk
  Short,       ///< a write takes only half of its bytes
  Kill,        ///< SIGKILL in front of the call
};

extern "C" {

/// From now on counts the calls of `kinds`, from 1, and lets the fault happen at call `at`.
void armFaults(const char* folder, unsigned kinds, Fault fault, long at);

/// Ends the watch and gives the number of calls counted.
long disarmFaults();
}

}  // namespace orvane::test
