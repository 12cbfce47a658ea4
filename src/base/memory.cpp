#include "base/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace quarnel {

void PrefaultForWriting(void* block, size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  const long pageSize = sysconf(_SC_PAGE_SIZE);
  if (block == nullptr || pageSize <= 0) return;
  const uintptr_t page = static_cast<uintptr_t>(pageSize);
  const uintptr_t start = reinterpret_cast<uintptr_t>(block);
  const uintptr_t first = (start + page - 1) / page * page;
  const uintptr_t last = (start + bytes) / page * page;
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
#else
  (void)block;
  (void)bytes;
#endif
}

}  // namespace quarnel
