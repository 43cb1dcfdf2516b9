#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/allocator_interface.h>
#endif

namespace orvane::test {

/// Counts the bytes on the heap, of all threads. Only the address sanitizer can tell them.
class HeapCount {
 public:
#ifdef __SANITIZE_ADDRESS__
  static constexpr bool kIsAvailable = true;
#else
  static constexpr bool kIsAvailable = false;
#endif

  /// The greatest number of bytes that `work` holds at a time in addition to those that are held
  /// before it; 0 where that cannot be told.
  template <typename Work>
  static std::uint64_t peakOf(Work work) {
    install();
    const std::int64_t before = held_;
    peak_ = before;
    work();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(0, peak_ - before));
  }

 private:
  static void install() {
#ifdef __SANITIZE_ADDRESS__
    static const int installed = __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);
    static_cast<void>(installed);
#endif
  }

#ifdef __SANITIZE_ADDRESS__
  static void onMalloc(const volatile void*, std::size_t size) {
    const std::int64_t held = held_ += static_cast<std::int64_t>(size);
    for (std::int64_t peak = peak_; held > peak && !peak_.compare_exchange_weak(peak, held);) {
    }
  }
  static void onFree(const volatile void* memory) {
    if (memory == nullptr) return;
    held_ -=
        static_cast<std::int64_t>(__sanitizer_get_allocated_size(const_cast<const void*>(memory)));
  }
#endif

  static inline std::atomic<std::int64_t> held_ = 0;
  static inline std::atomic<std::int64_t> peak_ = 0;
};

/// The most memory that a page may take while it is loaded and saved.
inline std::uint64_t mostPageMemory(std::uint64_t fileBytes, std::uint64_t decodedBytes) {
  return 4 * (fileBytes + decodedBytes) + (std::uint64_t{32} << 20);
}

}  // namespace orvane::test
