#include "trust/faults.h"

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

bool isBelow(const char* path) {
  return plan.folder[0] != '\0' && std::string_view(path).starts_with(plan.folder);
}

// For a path relative to an open folder.
bool isBelow(int folder, const char* path) {
  if (folder == AT_FDCWD || path[0] == '/') return isBelow(path);
  char place[sizeof plan.folder]{};
  const std::string link = "/proc/self/fd/" + std::to_string(folder);
  return readlink(link.c_str(), place, sizeof place - 1) > 0 && isBelow(place);
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

// `call` opens a file or folder. Its descriptor is watched if it is opened for writing, or if the
// folder claims to be in FUSE, where everything is synced.
template <typename Call>
int opening(bool below, const char* path, int flags, Call call) {
  if (below && isRefusedByShare(path, flags)) return failed(EOPNOTSUPP);
  const bool isWatched = below && canFail(path, flags);
  if (isWatched && strikes(kOpen)) return failed((flags & O_CREAT) != 0 ? ENOSPC : EIO);
  const int descriptor = call();
  watch(descriptor, (isWatched && (flags & O_ACCMODE) != O_RDONLY) || (below && claimsFuse()));
  return descriptor;
}

// Fails, or writes only half of the buffer.
template <typename Call>
ssize_t writing(int descriptor, std::size_t size, Call call) {
  if (!isWatched(descriptor) || !strikes(kWrite)) return call(size);
  return plan.fault == Fault::Short ? call((size + 1) / 2) : failed(ENOSPC);
}

constexpr std::size_t kLargeBlock = 64 * 1024;

[[maybe_unused]] bool failsToAllocate(std::size_t size) {
  if (size < kLargeBlock || !strikes(kMemory)) return false;
  errno = ENOMEM;
  return true;
}

// For a program that has the library preloaded.
[[maybe_unused]] const bool armedByEnvironment = [] {
  const char* at = std::getenv("KILL_AT_CALL");
  const char* folder = std::getenv("KILL_FOLDER");
  if (at != nullptr && folder != nullptr) {
    const char* file = std::getenv("CALLS_FILE");  // gets one byte per call
    tally = file == nullptr ? -1 : open(file, O_WRONLY | O_CREAT | O_APPEND, 0666);
    armFaults(folder, kAllButMemory, Fault::Kill, std::atol(at));
  }
  return at != nullptr;
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
// Calls with a descriptor, or with a path as the first argument, that only fail.
#define ON_DESCRIPTOR(kind, name, parameters, ...)                                   \
  int name parameters {                                                              \
    NEXT(name);                                                                      \
    return isWatched(descriptor) && strikes(kind) ? failed(EIO) : call(__VA_ARGS__); \
  }
#define ON_PATH(kind, name, parameters, ...)                                    \
  int name parameters noexcept {                                                \
    NEXT(name);                                                                 \
    return isBelow(path) && strikes(kind) ? failed(ENOSPC) : call(__VA_ARGS__); \
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
  return opening(isBelow(path), path, flags, [&] { return call(path, flags, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
  NEXT(openat);
  MODE_OF(flags)
  return opening(isBelow(folder, path), path, flags,
                 [&] { return call(folder, path, flags, mode); });
}

DIR* opendir(const char* path) {
  NEXT(opendir);
  return isBelow(path) && strikes(kOpen) ? (failed(EIO), nullptr) : call(path);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
  NEXT(write);
  return writing(descriptor, size, [&](size_t part) { return call(descriptor, bytes, part); });
}

ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  NEXT(pwrite);
  return writing(descriptor, size,
                 [&](size_t part) { return call(descriptor, bytes, part, offset); });
}

ssize_t pwritev(int descriptor, const iovec* pieces, int count, off_t offset) {
  NEXT(pwritev);
  if (!isWatched(descriptor) || !strikes(kWrite)) return call(descriptor, pieces, count, offset);
  if (plan.fault != Fault::Short) return failed(ENOSPC);
  const iovec half{pieces->iov_base, (pieces->iov_len + 1) / 2};
  return call(descriptor, &half, 1, offset);
}

// A kill loses nothing that was written, so the real sync is skipped.
int fsync(int descriptor) {
  NEXT(fsync);
  if (!isWatched(descriptor)) return call(descriptor);
  return strikes(kSync) ? failed(EIO) : 0;
}

int syncfs(int descriptor) noexcept {  // called on folders, which are not watched
  NEXT(syncfs);
  if (plan.folder[0] == '\0') return call(descriptor);
  return !claimsFuse() && strikes(kSync) ? failed(EIO) : 0;
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

ON_DESCRIPTOR(kResize, ftruncate, (int descriptor, off_t size) noexcept, descriptor, size)
ON_DESCRIPTOR(kOwner, fchmod, (int descriptor, mode_t mode) noexcept, descriptor, mode)
ON_DESCRIPTOR(kOwner, fchown, (int descriptor, uid_t user, gid_t group) noexcept, descriptor, user,
              group)
ON_PATH(kRename, rename, (const char* path, const char* to), path, to)
ON_PATH(kFolder, mkdir, (const char* path, mode_t mode), path, mode)
ON_PATH(kRemove, unlink, (const char* path), path)

int unlinkat(int folder, const char* path, int flags) noexcept {
  NEXT(unlinkat);
  return isBelow(folder, path) && strikes(kRemove) ? failed(EIO) : call(folder, path, flags);
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
