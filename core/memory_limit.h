// The one bound on the memory that the library takes for a single image or a pool's images.
#pragma once

#include <cstddef>

namespace img {

// Half of the physical memory. A system that promises more memory than it has ends the process when the promise is
// called in, so the library refuses before it asks.
size_t LargestAllocation();

// Puts another bound in its place, for tests and fuzzers, and the bound above with 0.
void OverrideLargestAllocation(size_t byteCount);

// How many blocks of a size fit the bound beside what is already taken, with what keeping each of them costs.
size_t MostAllocations(size_t byteCount, size_t alreadyTaken = 0);

}  // namespace img
