#include "core/memory_limit.h"

#include <unistd.h>

#include <atomic>
#include <limits>

namespace {

std::atomic<size_t> overridden = 0;

}  // namespace

size_t img::LargestAllocation() {
  if (const size_t other = overridden; other != 0) return other;
  static const size_t limit = [] {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return std::numeric_limits<size_t>::max() / 2;
    return static_cast<size_t>(pages) / 2 * static_cast<size_t>(pageSize);
  }();
  return limit;
}

void img::OverrideLargestAllocation(size_t byteCount) { overridden = byteCount; }

size_t img::MostAllocations(size_t byteCount, size_t alreadyTaken) {
  // The heads of the blocks and the nodes of the containers that hold them, generously.
  constexpr size_t kBookkeeping = 256;
  const size_t limit = LargestAllocation();
  if (alreadyTaken > limit || byteCount > limit - alreadyTaken) return 0;
  return (limit - alreadyTaken + kBookkeeping) / (byteCount + kBookkeeping);
}
