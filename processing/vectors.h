// The first include of a source that is compiled once for each vector instruction set (cmake/KorvelVectors.cmake).
#pragma once

#include <hwy/highway.h>

#include <cstdint>

static_assert(HWY_MAX_BYTES == KORVEL_VECTOR_BYTES, "Highway has chosen another instruction set");

namespace img::processing::KORVEL_VECTORS {

namespace hn = hwy::HWY_NAMESPACE;

inline constexpr hn::ScalableTag<uint8_t> kBytes;
inline constexpr hn::ScalableTag<uint16_t> kWords;
inline constexpr hn::ScalableTag<int32_t> kIntegers;
inline constexpr hn::ScalableTag<float> kFloats;

using Bytes = hn::Vec<decltype(kBytes)>;
using Words = hn::Vec<decltype(kWords)>;
using Integers = hn::Vec<decltype(kIntegers)>;
using Floats = hn::Vec<decltype(kFloats)>;

}  // namespace img::processing::KORVEL_VECTORS
