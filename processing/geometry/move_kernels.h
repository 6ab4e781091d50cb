// The kernels of mirrors and turns: lines and pixels that change places, whatever they are.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// Lines of as many bytes. Steps lead from one line to the next, and may lead backwards. Memory has no alignment.
struct LineCopy {
  const uint8_t* from;
  ptrdiff_t fromStep;
  uint8_t* to;
  ptrdiff_t toStep;
  size_t byteCount;
  size_t lineCount;
  bool isPastCaches;  // plain code takes no notice
};

struct LineSwap {
  uint8_t* one;
  ptrdiff_t oneStep;
  uint8_t* other;
  ptrdiff_t otherStep;
  size_t byteCount;
  size_t lineCount;
};

// Columns of the source become lines of the target. Width and height are the source's, in pixels.
struct Transposition {
  const uint8_t* from;
  ptrdiff_t fromStep;
  uint8_t* to;
  ptrdiff_t toStep;
  size_t width;
  size_t height;
  bool isPastCaches;  // as above
};

inline constexpr size_t kLargestPixel = 8;

// What takes one of several kernels takes it by the bytes of a pixel: 1, 2, 3, 4, 6 or 8; the others are null.
struct MoveKernels {
  // Source and target don't overlap.
  void (*copyLines)(const LineCopy& lines);
  void (*copyLinesReversed[kLargestPixel + 1])(const LineCopy& lines);
  void (*transpose[kLargestPixel + 1])(const Transposition& pixels);

  // The two lines don't overlap. Reversed, the first pixel of one becomes the last one of the other.
  void (*swapLines)(const LineSwap& lines);
  void (*swapLinesReversed[kLargestPixel + 1])(const LineSwap& lines);
};

extern const MoveKernels kPlainMoveKernels;
namespace avx {
extern const MoveKernels kMoveKernels;
}
namespace avx2 {
extern const MoveKernels kMoveKernels;
}

constexpr const MoveKernels& MoveKernelsFor(InstructionSet set) {
  const MoveKernels* const vectors = ChooseVectors(set, avx::kMoveKernels, avx2::kMoveKernels);
  return vectors != nullptr ? *vectors : kPlainMoveKernels;
}

}  // namespace img::processing
