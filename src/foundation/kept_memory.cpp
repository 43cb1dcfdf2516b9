#include "foundation/kept_memory.h"

#include <malloc.h>

namespace orvane {

void keepFreedMemory() {
  constexpr int kMegabyte = 1 << 20;
  mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);  // the most that glibc allows; an A4 page takes 26
  mallopt(M_TRIM_THRESHOLD, 128 * kMegabyte);
}

}  // namespace orvane
