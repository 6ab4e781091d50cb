// Vector kernels of look-ups.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// Replace each value by its entry of a table. in and out are the same or don't overlap. Each takes whole groups, from
// the first on, and returns how many values these were.
struct TableKernels {
  // Of 256 entries. Null where plain code is faster, as it is with vectors of 16 bytes.
  size_t (*bytes)(const uint8_t* in, uint8_t* out, size_t count, const uint8_t* table);
  // Samples of 16 bits, of which those above maximum count as it.
  size_t (*words)(const uint8_t* in, uint8_t* out, size_t count, const uint16_t* table, uint16_t maximum);
};

namespace avx {
extern const TableKernels kTableKernels;
}
namespace avx2 {
extern const TableKernels kTableKernels;
}

constexpr const TableKernels* FindTableKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kTableKernels, avx2::kTableKernels);
}

}  // namespace img::processing
