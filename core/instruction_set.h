// Which vector instructions an object uses.
#pragma once

#include "core/processor_features.h"

namespace img {

// Kernels exist in plain code for any x86-64 processor, with vectors of 16 bytes for AVX, and of 32 bytes for AVX2.
// Which one runs changes no result, unless an operation says so.
enum class InstructionSet { Baseline, Avx, Avx2 };

// The widest that a record has and that this processor and its operating system can run. A record may claim more than
// there is: what results depend on is decided by the record alone, how fast they come by this.
InstructionSet InstructionSetOf(const ProcessorFeatures& features);

}  // namespace img
