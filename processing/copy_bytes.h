// Copies of pixels as they are.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/instruction_set.h"

namespace img::processing {

// Copies bytes between memories that don't overlap, past the caches if they are many.
void CopyBytes(const uint8_t* from, uint8_t* to, size_t byteCount, InstructionSet set);

}  // namespace img::processing
