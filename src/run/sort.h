// Every ordering of records goes through the C library's qsort with its designed comparator:
// the comparators truncate real differences, so only this sort gives the defined order.
#pragma once

#include <cstddef>
#include <cstdlib>

// An empty array may have no storage at all, and qsort must not be handed a null base.
inline void SortRecords(void* base, size_t count, size_t size,
                        int (*compare)(const void*, const void*)) {
  if (count > 1) std::qsort(base, count, size, compare);
}
