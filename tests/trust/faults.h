#pragma once

/// Makes chosen system calls fail or end the process. The library overrides functions of the C
/// library; it is linked to a test or preloaded into a program. It affects only files below one
/// folder, and allocations of at least 64 KiB.
namespace orvane::test {

enum CallKind : unsigned {
  kWrite = 1,     ///< write, pwrite, pwritev, copy_file_range
  kOpen = 2,      ///< open, openat, opendir
  kRename = 4,    ///< rename, renameat2
  kSync = 8,      ///< fsync, fdatasync, syncfs
  kClose = 16,    ///< close of a file that was opened for writing
  kResize = 32,   ///< ftruncate
  kMemory = 64,   ///< malloc, calloc, realloc
  kFolder = 128,  ///< mkdir, mkdirat, mkdtemp
  kRemove = 256,  ///< unlink, unlinkat, rmdir
  kThread = 512,  ///< pthread_create
  kOwner = 1024,  ///< fchmod, fchown
  kFuse = 2048,   ///< no calls, but the folder claims to be in FUSE, where syncfs flushes nothing
  kShare = 4096,  ///< no calls, but no file of the output can be read and written, as with gvfs
  kAll = 511,
  kAllButMemory = kAll - kMemory,
};

enum class Fault {
  None,        ///< calls are only counted
  Fail,        ///< call number `at` fails
  FailOnward,  ///< that call and all later ones fail, as on a full disk
  Short,       ///< a write writes only half of its bytes
  Kill,        ///< SIGKILL before the call
};

extern "C" {

/// Starts to count the calls of `kinds`, from 1, and causes `fault` at call `at`.
void armFaults(const char* folder, unsigned kinds, Fault fault, long at);

/// Stops counting and returns the number of calls.
long disarmFaults();
}

}  // namespace orvane::test
