// When to write past the caches.
#pragma once

#include <xmmintrin.h>

#include <cstddef>

namespace img::processing {

// Ordinary stores read each line of memory into the cache before they change it. That pays while the output is small
// enough to be still there for its reader; a larger one had better go to memory directly. Measured on server
// processors, where outputs of 8 MB take twice as long with non-temporal stores, and of 50 MB half as long again
// without.
inline constexpr size_t kSmallestStreamedOutput = 12'000'000;

constexpr bool ShouldStream(size_t outputByteCount) { return outputByteCount >= kSmallestStreamedOutput; }

// After the last of a call's stores past the caches: whoever is handed the memory sees it in any order of loads.
inline void EndStreaming() { _mm_sfence(); }

}  // namespace img::processing
