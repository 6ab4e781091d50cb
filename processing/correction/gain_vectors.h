// Vector kernels of gain.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// A factor in integers, for values of 8 bits: the product is ((value * whole + (value * fraction >> 16)) * scale) >>
// 16, where the sum stays below 2^16. scale is at most 2^15.
struct FixedFactor {
  uint16_t whole;
  uint16_t fraction;
  uint16_t scale;
};

// Samples of even columns are multiplied by one factor and those of odd columns by another; products are limited to the
// largest value of their depth and lose their fraction. Factors lie in 0 to 64. in and out are the same or don't
// overlap. Each takes whole vectors, from the first sample on, and returns how many samples these were: an even number.
struct GainKernels {
  size_t (*bytes)(const uint8_t* in, uint8_t* out, size_t count, float even, float odd);
  size_t (*bytesInIntegers)(const uint8_t* in, uint8_t* out, size_t count, const FixedFactor& even,
                            const FixedFactor& odd);
  // Samples of 16 bits, whose bits above maximum (2^n - 1) are ignored.
  size_t (*words)(const uint8_t* in, uint8_t* out, size_t count, float even, float odd, uint16_t maximum);
};

namespace avx {
extern const GainKernels kGainKernels;
}
namespace avx2 {
extern const GainKernels kGainKernels;
}

constexpr const GainKernels* FindGainKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kGainKernels, avx2::kGainKernels);
}

}  // namespace img::processing
