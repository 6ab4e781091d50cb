// Mirrors and turns of whole images. Their pixels lie on whole bytes, and are moved as what these hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/image.h"
#include "core/instruction_set.h"

namespace img::processing {

struct Mirrors {
  bool leftRight;
  bool upDown;
};

// Memory that lasts from one image to the next, as large as the largest one needed.
class MoveScratch {
 public:
  // Unspecified bytes. Throws std::bad_alloc.
  uint8_t* Take(size_t byteCount);

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  size_t byteCount_ = 0;
};

// Input and output have the same format and size.
void CopyMirrored(const IfcImage& input, IfcImage& output, Mirrors mirrors, InstructionSet set);
void MirrorInPlace(IfcImage& image, Mirrors mirrors, InstructionSet set);

// A quarter turn. The output has the input's height as its width, and its width as its height.
//
//   counter-clockwise   output (x, y) takes input (width - 1 - y, x)
//   clockwise           output (x, y) takes input (y, height - 1 - x)
enum class QuarterTurn { CounterClockwise, Clockwise };

void CopyTurned(const IfcImage& input, IfcImage& output, QuarterTurn turn, InstructionSet set);

// The image covers its buffer; both exchange width and height. Throws std::bad_alloc and changes nothing if there is no
// memory for a copy.
void TurnInPlace(IfcImage& image, QuarterTurn turn, MoveScratch& scratch, InstructionSet set);

}  // namespace img::processing
