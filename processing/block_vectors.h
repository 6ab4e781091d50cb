// Vectors put together from blocks of 16 bytes. For sources of vector kernels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr hn::Full128<uint8_t> kBlockTag;

// In a table for shuffling, a byte that is none of the source's.
constexpr uint8_t kNoByte = 0x80;

// The 16 bytes here and, where vectors have 32, those there.
inline Bytes LoadBlocks(const uint8_t* here, [[maybe_unused]] const uint8_t* there) {
#if KORVEL_VECTOR_BYTES == 32
  return hn::Combine(kBytes, hn::LoadU(kBlockTag, there), hn::LoadU(kBlockTag, here));
#else
  return hn::LoadU(kBlockTag, here);
#endif
}

struct ThreeVectors {
  Bytes at[3];
};

// From vectors of which each has results for every block of 16 bytes to the order of memory: the first blocks of all,
// then their second ones.
HWY_INLINE ThreeVectors InOrder(Bytes a, Bytes b, Bytes c) {
#if KORVEL_VECTOR_BYTES == 32
  return {{hn::ConcatLowerLower(kBytes, b, a), hn::ConcatUpperLower(kBytes, a, c), hn::ConcatUpperUpper(kBytes, c, b)}};
#else
  return {{a, b, c}};
#endif
}

// store(block, place) for the block of each place.
template <class StoreBlock>
HWY_INLINE void StoreBlocks(Bytes bytes, uint8_t* here, [[maybe_unused]] uint8_t* there, const StoreBlock& store) {
#if KORVEL_VECTOR_BYTES == 32
  store(hn::LowerHalf(kBlockTag, bytes), here);
  store(hn::UpperHalf(kBlockTag, bytes), there);
#else
  store(bytes, here);
#endif
}

}  // namespace
}  // namespace img::processing::KORVEL_VECTORS
