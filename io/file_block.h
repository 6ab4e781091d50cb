// How much of a file goes to or comes from the system at a time where it is worked on piece by piece.
#pragma once

#include <cstddef>

namespace img::io {

// Large enough that calls of the system don't count, small enough to stay in a processor's second cache.
inline constexpr size_t kFileBlockByteCount = size_t{256} * 1024;

}  // namespace img::io
