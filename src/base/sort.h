// Every ordering of records goes through the C library's qsort with its own comparator: the
// comparators truncate real differences and so are no strict weak orders, and only this sort
// gives the defined order among the entries they find equal.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace quarnel {

// An empty array may have no storage at all, and qsort must not be handed a null base.
inline void SortRecords(void* base, size_t count, size_t size,
                        int (*compare)(const void*, const void*)) {
  if (count > 1) std::qsort(base, count, size, compare);
}

}  // namespace quarnel
