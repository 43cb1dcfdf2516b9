#include "trust/faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <pthread.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "trust/disk_journal.h"

namespace orvane::test {
namespace {

struct Plan {
  char folder[4096];
  unsigned kinds;
  Fault fault;
  long at;
  std::atomic<long> count;
} plan{};
int tally = -1;

std::array<std::atomic<bool>, 4096> watched{};  // by descriptor

bool isWatched(int descriptor) {
  return descriptor >= 0 && static_cast<std::size_t>(descriptor) < watched.size() &&
         watched[static_cast<std::size_t>(descriptor)];
}

void watch(int descriptor, bool on) {
  if (descriptor >= 0 && static_cast<std::size_t>(descriptor) < watched.size()) {
    watched[static_cast<std::size_t>(descriptor)] = on;
  }
}

std::string targetOf(const std::string& link) {
  char place[sizeof plan.folder]{};
  return readlink(link.c_str(), place, sizeof place - 1) > 0 ? place : "";
}

std::string placeOf(int descriptor) {
  return targetOf("/proc/self/fd/" + std::to_string(descriptor));
}

// The place of a path relative to an open folder, or to the current one (AT_FDCWD).
std::string placeOf(int folder, const char* path) {
  if (path[0] == '/') return path;
  return (folder == AT_FDCWD ? targetOf("/proc/self/cwd") : placeOf(folder)) + "/" + path;
}

bool isArmed() {
  return plan.folder[0] != '\0';
}

bool isBelow(std::string_view place) {
  return isArmed() && place.starts_with(plan.folder);
}

bool isBelow(int folder, const char* path) {
  return isArmed() && isBelow(placeOf(folder, path));
}

// Counts a call. Returns true if this call must fail.
bool strikes(CallKind kind) {
  if ((plan.kinds & kind) == 0) return false;
  const long number = ++plan.count;
  if (tally >= 0 && write(tally, "x", 1) != 1) std::abort();
  if (number == plan.at && plan.fault == Fault::Kill) kill(getpid(), SIGKILL);
  return plan.fault == Fault::FailOnward ? number >= plan.at
                                         : number == plan.at && plan.fault != Fault::None;
}

int failed(int error) {
  errno = error;
  return -1;
}

template <typename Function>
Function next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
#define NEXT(name) static const auto call = next(&::name, #name)

// True for scans and for files opened for writing. (A setting that cannot be read counts as empty.)
bool canFail(const char* path, int flags) {
  const bool isWritten = (flags & O_ACCMODE) != O_RDONLY;
  return isWritten || std::string_view(path).find("/Batchs") != std::string_view::npos;
}

bool claimsFuse() {
  return (plan.kinds & kFuse) != 0;
}

bool isRefusedByShare(const char* path, int flags) {
  return (plan.kinds & kShare) != 0 && (flags & (O_ACCMODE | O_CREAT)) == O_RDWR &&
         std::string_view(path).find("/output/") != std::string_view::npos;
}

bool isRecorded(int folder, const char* path) {
  return journal::isOpen() && isBelow(folder, path);
}

bool isThere(int folder, const char* path) {
  struct stat status {};
  return fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) == 0;
}

// `call` opens a file or folder. Its descriptor is watched if it is opened for writing, or if the
// folder claims to be in FUSE, where everything is synced.
template <typename Call>
int opening(int folder, const char* path, int flags, Call call) {
  const bool below = isBelow(folder, path);
  if (below && isRefusedByShare(path, flags)) return failed(EOPNOTSUPP);
  const bool isWatched = below && canFail(path, flags);
  if (isWatched && strikes(kOpen)) return failed((flags & O_CREAT) != 0 ? ENOSPC : EIO);
  const bool isOld = !isRecorded(folder, path) || isThere(folder, path);
  const int descriptor = call();
  watch(descriptor, (isWatched && (flags & O_ACCMODE) != O_RDONLY) || (below && claimsFuse()));
  if (descriptor < 0 || !isRecorded(folder, path)) return descriptor;
  if (!isOld) journal::createdFile(descriptor, placeOf(descriptor));
  if ((flags & O_TRUNC) != 0) journal::resized(descriptor, 0);
  return descriptor;
}

// The result of a call that changes the disk. A success is recorded.
template <typename Record>
int changing(int result, bool recorded, Record record) {
  if (result == 0 && recorded) record();
  return result;
}

// Fails, or writes only half of the buffer. A negative offset is the position of the descriptor.
template <typename Call>
ssize_t writing(int descriptor, const void* bytes, std::size_t size, off_t offset, Call call) {
  if (!isWatched(descriptor)) return call(size);
  if (strikes(kWrite)) return plan.fault == Fault::Short ? call((size + 1) / 2) : failed(ENOSPC);
  const ssize_t written = call(size);
  if (written > 0 && journal::isOpen()) {
    journal::wrote(descriptor, bytes, static_cast<std::size_t>(written), offset);
  }
  return written;
}

constexpr std::size_t kLargeBlock = 64 * 1024;

[[maybe_unused]] bool failsToAllocate(std::size_t size) {
  if (size < kLargeBlock || !strikes(kMemory)) return false;
  errno = ENOMEM;
  return true;
}

// For a program that has the library preloaded.
[[maybe_unused]] const bool armedByEnvironment = [] {
  const char* const toFail = std::getenv("FAIL_AT_CALL");
  const char* const at = toFail == nullptr ? std::getenv("KILL_AT_CALL") : toFail;
  const char* folder = std::getenv("KILL_FOLDER");
  if (at != nullptr && folder != nullptr) {
    const char* file = std::getenv("CALLS_FILE");  // gets one byte per call
    tally = file == nullptr ? -1 : open(file, O_WRONLY | O_CREAT | O_APPEND, 0666);
    armFaults(folder, kAllButMemory, toFail == nullptr ? Fault::Kill : Fault::Fail, std::atol(at));
  }
  const char* journal = std::getenv("JOURNAL_FILE");
  const char* recorded = std::getenv("JOURNAL_FOLDER");
  if (journal != nullptr && recorded != nullptr) {
    armFaults(recorded, 0, Fault::None, 0);
    recordDisk(journal);
  }
  return at != nullptr || journal != nullptr;
}();

}  // namespace

void armFaults(const char* folder, unsigned kinds, Fault fault, long at) {
  std::strncpy(plan.folder, folder, sizeof plan.folder - 1);
  plan.fault = fault;
  plan.at = at;
  plan.count = 0;
  plan.kinds = kinds;
}

long disarmFaults() {
  plan.kinds = 0;
  return plan.count;
}

}  // namespace orvane::test

using namespace orvane::test;

// On a 64-bit platform, the names that end in 64 are aliases.
#define ALSO(alias_, name) extern __typeof__(name) alias_ __attribute__((alias(#name)));
// Calls with a descriptor that only fail.
#define ON_DESCRIPTOR(kind, name, parameters, ...)                                   \
  int name parameters {                                                              \
    NEXT(name);                                                                      \
    return isWatched(descriptor) && strikes(kind) ? failed(EIO) : call(__VA_ARGS__); \
  }
// Calls with a path that starts at `base`. They fail, or `record` tells the journal.
#define ON_PATH(kind, error, name, parameters, base, record, ...)                         \
  int name parameters noexcept {                                                          \
    NEXT(name);                                                                           \
    if (isBelow(base, path) && strikes(kind)) return failed(error);                       \
    return changing(call(__VA_ARGS__), isRecorded(base, path), [&] { journal::record; }); \
  }

// The mode argument of a call that may create a file.
#define MODE_OF(flags)                                                        \
  va_list arguments;                                                          \
  va_start(arguments, flags);                                                 \
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0; \
  va_end(arguments);

extern "C" {

int open(const char* path, int flags, ...) {
  NEXT(open);
  MODE_OF(flags)
  return opening(AT_FDCWD, path, flags, [&] { return call(path, flags, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
  NEXT(openat);
  MODE_OF(flags)
  return opening(folder, path, flags, [&] { return call(folder, path, flags, mode); });
}

DIR* opendir(const char* path) {
  NEXT(opendir);
  return isBelow(path) && strikes(kOpen) ? (failed(EIO), nullptr) : call(path);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
  NEXT(write);
  return writing(descriptor, bytes, size, -1,
                 [&](size_t part) { return call(descriptor, bytes, part); });
}

ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  NEXT(pwrite);
  return writing(descriptor, bytes, size, offset,
                 [&](size_t part) { return call(descriptor, bytes, part, offset); });
}

ssize_t pwritev(int descriptor, const iovec* pieces, int count, off_t offset) {
  NEXT(pwritev);
  if (!isWatched(descriptor)) return call(descriptor, pieces, count, offset);
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    bytes.append(static_cast<const char*>(pieces[i].iov_base), pieces[i].iov_len);
  }
  return writing(descriptor, bytes.data(), bytes.size(), offset, [&](size_t part) {
    const iovec piece{bytes.data(), part};
    return call(descriptor, &piece, 1, offset);
  });
}

// A kill loses nothing that was written, so the real sync is skipped.
int fsync(int descriptor) {
  NEXT(fsync);
  if (isWatched(descriptor) && strikes(kSync)) return failed(EIO);
  const bool isRecorded = journal::isOpen() && isBelow(placeOf(descriptor));
  if (isRecorded) journal::flushed(descriptor);
  return isRecorded || isWatched(descriptor) ? 0 : call(descriptor);
}

int syncfs(int descriptor) noexcept {  // called on folders, which are not watched
  NEXT(syncfs);
  if (!isArmed()) return call(descriptor);
  if (claimsFuse()) return 0;  // and flushes nothing
  if (strikes(kSync)) return failed(EIO);
  if (journal::isOpen()) journal::flushedAll();
  return 0;
}

void sync() noexcept {
  NEXT(sync);
  if (!isArmed()) return call();
  if (journal::isOpen() && !claimsFuse()) journal::flushedAll();
}

int statfs(const char* path, struct statfs* status) noexcept {
  NEXT(statfs);
  const int result = call(path, status);
  if (claimsFuse() && isBelow(path)) status->f_type = FUSE_SUPER_MAGIC;
  return result;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept {
  NEXT(pthread_create);
  return strikes(kThread) ? EAGAIN : call(thread, attributes, start, argument);
}

int dup(int descriptor) noexcept {
  NEXT(dup);
  const int second = call(descriptor);
  watch(second, isWatched(descriptor));
  return second;
}

int close(int descriptor) {  // closes the file even if it fails, like Linux
  NEXT(close);
  const bool fails = isWatched(descriptor) && strikes(kClose);
  watch(descriptor, false);
  const int result = call(descriptor);
  return fails ? failed(EIO) : result;
}

int ftruncate(int descriptor, off_t size) noexcept {
  NEXT(ftruncate);
  if (!isWatched(descriptor)) return call(descriptor, size);
  if (strikes(kResize)) return failed(EIO);
  return changing(call(descriptor, size), journal::isOpen(),
                  [&] { journal::resized(descriptor, size); });
}

ON_DESCRIPTOR(kOwner, fchmod, (int descriptor, mode_t mode) noexcept, descriptor, mode)
ON_DESCRIPTOR(kOwner, fchown, (int descriptor, uid_t user, gid_t group) noexcept, descriptor, user,
              group)
ON_PATH(kRename, ENOSPC, rename, (const char* path, const char* to), AT_FDCWD,
        renamed(placeOf(AT_FDCWD, path), placeOf(AT_FDCWD, to)), path, to)
ON_PATH(kRename, ENOSPC, renameat2,
        (int base, const char* path, int folder, const char* to, unsigned flags), base,
        renamed(placeOf(base, path), placeOf(folder, to)), base, path, folder, to, flags)
ON_PATH(kFolder, ENOSPC, mkdir, (const char* path, mode_t mode), AT_FDCWD,
        createdFolder(placeOf(AT_FDCWD, path)), path, mode)
ON_PATH(kFolder, ENOSPC, mkdirat, (int base, const char* path, mode_t mode), base,
        createdFolder(placeOf(base, path)), base, path, mode)
ON_PATH(kRemove, ENOSPC, unlink, (const char* path), AT_FDCWD, removed(placeOf(AT_FDCWD, path)),
        path)
ON_PATH(kRemove, ENOSPC, rmdir, (const char* path), AT_FDCWD, removed(placeOf(AT_FDCWD, path)),
        path)
ON_PATH(kRemove, EIO, unlinkat, (int base, const char* path, int flags), base,
        removed(placeOf(base, path)), base, path, flags)

// glibc calls its own mkdir in it.
char* mkdtemp(char* path) {
  NEXT(mkdtemp);
  if (isBelow(AT_FDCWD, path) && strikes(kFolder)) return failed(ENOSPC), nullptr;
  char* const created = call(path);
  if (created != nullptr && isRecorded(AT_FDCWD, path)) {
    journal::createdFolder(placeOf(AT_FDCWD, path));
  }
  return created;
}

ssize_t copy_file_range(int source, off_t* from, int target, off_t* to, size_t size,
                        unsigned flags) {
  NEXT(copy_file_range);
  if (!isWatched(target)) return call(source, from, target, to, size, flags);
  struct stat status {};
  const off_t begin = from == nullptr ? lseek(source, 0, SEEK_CUR) : *from;
  if (begin < 0 || fstat(source, &status) != 0) return -1;
  // A program may ask for much more than there is.
  std::string bytes(std::min(size, static_cast<size_t>(std::max(status.st_size - begin, off_t{0}))),
                    '\0');
  if (pread(source, bytes.data(), bytes.size(), begin) < 0) return -1;
  const off_t offset = to == nullptr ? -1 : *to;
  return writing(target, bytes.data(), bytes.size(), offset,
                 [&](size_t part) { return call(source, from, target, to, part, flags); });
}

ALSO(open64, open)
ALSO(openat64, openat)
ALSO(pwrite64, pwrite)
ALSO(pwritev64, pwritev)
ALSO(ftruncate64, ftruncate)
ALSO(fdatasync, fsync)

#if !defined __SANITIZE_ADDRESS__ && !defined __SANITIZE_THREAD__  // they have their own allocator
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) noexcept {
  return failsToAllocate(size) ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
  return failsToAllocate(count * size) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) noexcept {
  return failsToAllocate(size) ? nullptr : __libc_realloc(block, size);
}
#endif
}
