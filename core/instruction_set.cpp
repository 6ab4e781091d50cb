#include "core/instruction_set.h"

namespace img {

InstructionSet InstructionSetOf(const ProcessorFeatures& features) {
  static const bool runsAvx2 = __builtin_cpu_supports("avx2") > 0;
  static const bool runsAvx = __builtin_cpu_supports("avx") > 0;
  if (features.avx2 != 0 && runsAvx2) return InstructionSet::Avx2;
  // Whoever has the one has the other, but a record may name only the wider.
  if ((features.avx != 0 || features.avx2 != 0) && runsAvx) return InstructionSet::Avx;
  return InstructionSet::Baseline;
}

}  // namespace img
