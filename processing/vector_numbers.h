// Conversions between the numbers in vectors, for sources that are compiled once for each instruction set: single
// instructions that Highway lacks or wraps in corrections for numbers that don't occur.
#pragma once

#include <immintrin.h>

#include "processing/vectors.h"

namespace img::processing::KORVEL_VECTORS {

// What no 32-bit integer can hold, and what is not a number, becomes the lowest integer.
inline Integers Truncated(Floats values) {
#if KORVEL_VECTOR_BYTES == 32
  return Integers{_mm256_cvttps_epi32(values.raw)};
#else
  return Integers{_mm_cvttps_epi32(values.raw)};
#endif
}

// By the processor's mode: to the nearest, unless somebody has changed it. What no 32-bit integer can hold, and what is
// not a number, becomes the lowest integer.
inline Integers Rounded(Floats values) {
#if KORVEL_VECTOR_BYTES == 32
  return Integers{_mm256_cvtps_epi32(values.raw)};
#else
  return Integers{_mm_cvtps_epi32(values.raw)};
#endif
}

// What is not a number stays so.
inline Floats LimitedAbove(Floats values, Floats maximum) {
#if KORVEL_VECTOR_BYTES == 32
  return Floats{_mm256_min_ps(maximum.raw, values.raw)};
#else
  return Floats{_mm_min_ps(maximum.raw, values.raw)};
#endif
}

// Integers of both in turn, 16 bytes of the one and of the other, limited to 0 to 65535.
inline Words LimitedWords(Integers a, Integers b) {
#if KORVEL_VECTOR_BYTES == 32
  return Words{_mm256_packus_epi32(a.raw, b.raw)};
#else
  return Words{_mm_packus_epi32(a.raw, b.raw)};
#endif
}

// Words of both in turn, 16 bytes of the one and of the other, as signed numbers limited to 0 to 255.
inline Bytes LimitedBytes(Words a, Words b) {
#if KORVEL_VECTOR_BYTES == 32
  return Bytes{_mm256_packus_epi16(a.raw, b.raw)};
#else
  return Bytes{_mm_packus_epi16(a.raw, b.raw)};
#endif
}

// Integers of all four in turn, 16 bytes of each, limited to 0 to 255.
inline Bytes LimitedBytes(Integers a, Integers b, Integers c, Integers d) {
#if KORVEL_VECTOR_BYTES == 32
  return Bytes{_mm256_packus_epi16(_mm256_packs_epi32(a.raw, b.raw), _mm256_packs_epi32(c.raw, d.raw))};
#else
  return Bytes{_mm_packus_epi16(_mm_packs_epi32(a.raw, b.raw), _mm_packs_epi32(c.raw, d.raw))};
#endif
}

}  // namespace img::processing::KORVEL_VECTORS
