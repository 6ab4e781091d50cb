// Vector kernels of the search for hot pixels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// A line and those of its pixels' neighbours (hotpixel_kernels.h). In a mono image far and near are the same.
struct HotpixelLines {
  const uint8_t* farUpper;
  const uint8_t* nearUpper;
  const uint8_t* here;
  const uint8_t* nearLower;
  const uint8_t* farLower;
};

// What half of a hot pixel's least deviation, rounded down, doesn't fall below. Values are divided by a power of two
// into as many parts, of which the last takes all above it as well.
struct HotpixelBounds {
  static constexpr size_t kParts = 16;

  uint32_t shift;  // 4 for samples of a byte
  uint8_t lower[kParts];
  uint8_t upper[kParts];  // 0 for samples of a byte
};

// Looks through whole vectors of a line's pixels from first to end, whose neighbours lie to both sides, up to the first
// vector that has candidates. Returns the place behind it, and in candidates the pixels of it: as many bits for each as
// a sample has bytes, of which the lowest is set for a candidate. All pixels that exceed their threshold are
// candidates.
using FindCandidates = size_t (*)(const HotpixelLines& lines, size_t first, size_t end, bool isFirstNear,
                                  const HotpixelBounds& bounds, uint32_t& candidates);

struct HotpixelKernels {
  size_t vectorBytes;
  FindCandidates inMonoBytes;
  FindCandidates inMonoWords;
  FindCandidates inBayerBytes;
  FindCandidates inBayerWords;
};

namespace avx {
extern const HotpixelKernels kHotpixelKernels;
}
namespace avx2 {
extern const HotpixelKernels kHotpixelKernels;
}

constexpr const HotpixelKernels* FindHotpixelKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kHotpixelKernels, avx2::kHotpixelKernels);
}

}  // namespace img::processing
