// The instruction sets that tests of vector kernels walk through.
#pragma once

#include <ostream>
#include <vector>

#include "core/instruction_set.h"

namespace img {

inline std::ostream& operator<<(std::ostream& out, InstructionSet set) {
  switch (set) {
    case InstructionSet::Avx2:
      return out << "Avx2";
    case InstructionSet::Avx:
      return out << "Avx";
    default:
      return out << "Baseline";
  }
}

}  // namespace img

namespace korvel_test {

// Those that this machine runs, plain code among them.
inline std::vector<img::InstructionSet> RunnableInstructionSets() {
  std::vector<img::InstructionSet> sets = {img::InstructionSet::Baseline};
  for (const img::ProcessorFeatures features : {img::ProcessorFeatures{.avx = 1}, {.avx = 1, .avx2 = 1}}) {
    const img::InstructionSet set = img::InstructionSetOf(features);
    if (set != sets.back()) sets.push_back(set);
  }
  return sets;
}

}  // namespace korvel_test
