#include "trust/faults.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace orvane::test {
namespace {

struct Plan {
  char folder[4096];
  unsigned kinds;
  Fault fault;
  long at;
  long count;
} plan{};

std::array<bool, 4096> watched{};  // by descriptor

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

// Counts a call; true when it is the one to fail.
bool strikes(CallKind kind) {
  if ((plan.kinds & kind) == 0) return false;
  const long number = ++plan.count;
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

// Half of one buffer, for a write that is cut short.
template <typename Call>
ssize_t writing(int descriptor, std::size_t size, Call call) {
  if (!isWatched(descriptor) || !strikes(kWrite)) return call(size);
  return plan.fault == Fault::Short ? call((size + 1) / 2) : failed(ENOSPC);
}

template <typename Call>
ssize_t writingPieces(int descriptor, const iovec* pieces, int count, Call call) {
  if (!isWatched(descriptor) || !strikes(kWrite)) return call(pieces, count);
  if (plan.fault != Fault::Short) return failed(ENOSPC);
  const iovec half{pieces->iov_base, (pieces->iov_len + 1) / 2};
  return call(&half, 1);
}

template <typename Call>
int opening(const char* path, int flags, Call call) {
  const bool counts = (flags & O_ACCMODE) != O_RDONLY && isBelow(path);
  if (counts && strikes(kOpen)) return failed(ENOSPC);
  const int descriptor = call();
  watch(descriptor, counts);
  return descriptor;
}

template <typename Call>
int onDescriptor(CallKind kind, int descriptor, int error, Call call) {
  return isWatched(descriptor) && strikes(kind) ? failed(error) : call();
}

template <typename Call>
int onPath(CallKind kind, const char* path, Call call) {
  return isBelow(path) && strikes(kind) ? failed(ENOSPC) : call();
}

mode_t modeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

constexpr std::size_t kLargeBlock = 64 * 1024;

template <typename Call>
void* allocating(std::size_t size, Call call) {
  if (size < kLargeBlock || !strikes(kMemory)) return call();
  errno = ENOMEM;
  return nullptr;
}

// In a program that was started with the library in front of it.
[[maybe_unused]] const bool armedByEnvironment = [] {
  const char* at = std::getenv("KILL_AT_CALL");
  const char* folder = std::getenv("KILL_FOLDER");
  if (at != nullptr && folder != nullptr) {
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

extern "C" {

#define INTERPOSE_OPEN(name)                                              \
  int name(const char* path, int flags, ...) {                            \
    NEXT(name);                                                           \
    va_list arguments;                                                    \
    va_start(arguments, flags);                                           \
    const mode_t mode = modeOf(flags, arguments);                         \
    va_end(arguments);                                                    \
    return opening(path, flags, [&] { return call(path, flags, mode); }); \
  }
INTERPOSE_OPEN(open)
INTERPOSE_OPEN(open64)

#define INTERPOSE_OPENAT(name)                                                    \
  int name(int folder, const char* path, int flags, ...) {                        \
    NEXT(name);                                                                   \
    va_list arguments;                                                            \
    va_start(arguments, flags);                                                   \
    const mode_t mode = modeOf(flags, arguments);                                 \
    va_end(arguments);                                                            \
    return opening(path, flags, [&] { return call(folder, path, flags, mode); }); \
  }
INTERPOSE_OPENAT(openat)
INTERPOSE_OPENAT(openat64)

ssize_t write(int descriptor, const void* bytes, size_t size) {
  NEXT(write);
  return writing(descriptor, size, [&](size_t part) { return call(descriptor, bytes, part); });
}

#define INTERPOSE_PWRITE(name, Offset)                                                  \
  ssize_t name(int descriptor, const void* bytes, size_t size, Offset offset) {         \
    NEXT(name);                                                                         \
    return writing(descriptor, size,                                                    \
                   [&](size_t part) { return call(descriptor, bytes, part, offset); }); \
  }
INTERPOSE_PWRITE(pwrite, off_t)
INTERPOSE_PWRITE(pwrite64, off64_t)

ssize_t writev(int descriptor, const iovec* pieces, int count) {
  NEXT(writev);
  return writingPieces(descriptor, pieces, count,
                       [&](const iovec* part, int n) { return call(descriptor, part, n); });
}

#define INTERPOSE_PWRITEV(name, Offset)                                             \
  ssize_t name(int descriptor, const iovec* pieces, int count, Offset offset) {     \
    NEXT(name);                                                                     \
    return writingPieces(descriptor, pieces, count, [&](const iovec* part, int n) { \
      return call(descriptor, part, n, offset);                                     \
    });                                                                             \
  }
INTERPOSE_PWRITEV(pwritev, off_t)
INTERPOSE_PWRITEV(pwritev64, off64_t)

#define INTERPOSE_DESCRIPTOR(kind, error, name, parameters, ...)                     \
  int name parameters {                                                              \
    NEXT(name);                                                                      \
    return onDescriptor(kind, descriptor, error, [&] { return call(__VA_ARGS__); }); \
  }
// A kill loses nothing that was written, so the disk itself need not be waited for.
int fsync(int descriptor) {
  NEXT(fsync);
  if (!isWatched(descriptor)) return call(descriptor);
  return strikes(kSync) ? failed(EIO) : 0;
}
int fdatasync(int descriptor) {
  return fsync(descriptor);
}
INTERPOSE_DESCRIPTOR(kResize, EIO, ftruncate, (int descriptor, off_t size) noexcept, descriptor,
                     size)
INTERPOSE_DESCRIPTOR(kResize, EIO, ftruncate64, (int descriptor, off64_t size) noexcept, descriptor,
                     size)

int posix_fallocate(int descriptor, off_t offset, off_t size) {
  NEXT(posix_fallocate);
  return isWatched(descriptor) && strikes(kResize) ? ENOSPC : call(descriptor, offset, size);
}

int dup(int descriptor) noexcept {
  NEXT(dup);
  const int second = call(descriptor);
  watch(second, isWatched(descriptor));
  return second;
}

int close(int descriptor) {  // the file is closed even so, as Linux does it
  NEXT(close);
  const bool fails = isWatched(descriptor) && strikes(kClose);
  watch(descriptor, false);
  const int result = call(descriptor);
  return fails ? failed(EIO) : result;
}

#define INTERPOSE_PATH(kind, name, parameters, ...)               \
  int name parameters noexcept {                                  \
    NEXT(name);                                                   \
    return onPath(kind, path, [&] { return call(__VA_ARGS__); }); \
  }
INTERPOSE_PATH(kRename, rename, (const char* path, const char* to), path, to)
INTERPOSE_PATH(kRename, renameat2,
               (int from, const char* path, int in, const char* to, unsigned flags), from, path, in,
               to, flags)
INTERPOSE_PATH(kFolder, mkdir, (const char* path, mode_t mode), path, mode)
INTERPOSE_PATH(kRemove, unlink, (const char* path), path)
INTERPOSE_PATH(kRemove, unlinkat, (int folder, const char* path, int flags), folder, path, flags)
INTERPOSE_PATH(kRemove, rmdir, (const char* path), path)
INTERPOSE_PATH(kRemove, remove, (const char* path), path)

#ifndef __SANITIZE_ADDRESS__  // which has an allocator of its own
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) noexcept {
  return allocating(size, [&] { return __libc_malloc(size); });
}
void* calloc(size_t count, size_t size) noexcept {
  return allocating(count * size, [&] { return __libc_calloc(count, size); });
}
void* realloc(void* block, size_t size) noexcept {
  return allocating(size, [&] { return __libc_realloc(block, size); });
}
#endif
}
