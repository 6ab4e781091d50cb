// Vector kernels of binning: two columns become one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// Lines of which pairs of groups of samples are added up, each sample with its like.
struct BinnedLines {
  const uint8_t* from;
  size_t step;   // from one line to the next
  size_t count;  // 1 to 8
  uint8_t* to;
  size_t groupCount;  // of the output
  bool isMean;        // otherwise sums, up to maximum
  uint16_t maximum;   // 255 for bytes
};

inline constexpr size_t kLargestGroup = 4;

// By the samples of a group, 1 to 4. The fourth is alpha, which becomes the maximum. Each takes as many groups as make
// whole steps, from the first on, and returns how many these were.
struct BinningKernels {
  size_t (*bytes[kLargestGroup + 1])(const BinnedLines& lines);
  size_t (*words[kLargestGroup + 1])(const BinnedLines& lines);
};

namespace avx {
extern const BinningKernels kBinningKernels;
}
namespace avx2 {
extern const BinningKernels kBinningKernels;
}

constexpr const BinningKernels* FindBinningKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kBinningKernels, avx2::kBinningKernels);
}

}  // namespace img::processing
