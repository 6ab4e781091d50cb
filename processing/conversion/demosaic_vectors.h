// Vector kernels of the bilinear demosaics, a line at a time.
//
// A kernel reads the lines of the mosaic through pointers to their first samples, and nothing but what its columns'
// results depend on; the lines need no common stride. Samples of ten and twelve bits may hold anything above their
// depth. output is the address of the output line's first pixel. Addresses have no alignment.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "processing/conversion/colour_layout.h"
#include "processing/vector_choice.h"

namespace img::processing {

// The bilinear rule on columns first to last - 1, none of them the image's first or last, of a line that isn't either.
struct BilinearTask {
  const uint8_t* above;
  const uint8_t* here;
  const uint8_t* below;
  uint8_t* output;
  size_t first;
  size_t last;
  size_t ownColumn;  // the parity of the columns at which the line has its own colour
  bool isOwnFirst;   // in the output pixel; for luminance: own is red
  uint32_t alpha;
  bool isStreamed;  // past the caches; other memory may be written later than it looks, until EndStreaming
};

// The classic kernel on columns first to last - 1. They have all their neighbours: first is at least 1, last is at most
// the width - 2.
struct ClassicTask {
  // Two lines of a colour's samples, the nearer one first.
  struct Plane {
    const uint8_t* near;
    const uint8_t* far;
  };
  Plane planes[2];          // the plane with samples in even columns, and the other one
  const uint8_t* green[2];  // the line with green in even columns, and the other one
  uint8_t* output;
  size_t first;
  size_t last;
  bool isEvenFirst;  // in the output pixel: the plane with samples in even columns
  uint32_t alpha;
  bool isStreamed;
};

// Grey without a demosaic, on columns first to last - 1, none of them the image's last. Weights are those of the
// samples at heavyColumn's parity, and of the others.
struct MonoTask {
  const uint8_t* heavyLine;
  const uint8_t* lightLine;
  uint8_t* output;
  size_t first;
  size_t last;
  size_t heavyColumn;
  uint32_t maximum;
  bool isStreamed;
};

// The weights of ITU-R BT.601 in single precision.
inline constexpr float kRedWeight = 0.299f;
inline constexpr float kGreenWeight = 0.587f;
inline constexpr float kBlueWeight = 0.114f;
static_assert(std::bit_cast<uint32_t>(kRedWeight) == 0x3E991687);
static_assert(std::bit_cast<uint32_t>(kGreenWeight) == 0x3F1645A2);
static_assert(std::bit_cast<uint32_t>(kBlueWeight) == 0x3DE978D5);

struct DemosaicKernels {
  void (*bilinear[kColourLayouts])(const BilinearTask& task);  // by ColourLayout
  // Single precision, added in the order red, green, blue.
  void (*luminance)(const BilinearTask& task);
  void (*classic3)(const ClassicTask& task);
  void (*classic4)(const ClassicTask& task);
  void (*mono8)(const MonoTask& task);
  void (*mono16)(const MonoTask& task);
};

namespace avx {
extern const DemosaicKernels kDemosaicKernels;
}
namespace avx2 {
extern const DemosaicKernels kDemosaicKernels;
}

constexpr const DemosaicKernels* FindDemosaicKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kDemosaicKernels, avx2::kDemosaicKernels);
}

}  // namespace img::processing
