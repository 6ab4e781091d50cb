// How the callers of vector kernels find those that they may use.
//
// A family of kernels is a struct of function pointers, of which each instruction set has one constant, defined in a
// source that is compiled for it (cmake/KorvelVectors.cmake).
#pragma once

#include "core/instruction_set.h"

namespace img::processing {

// Null for Baseline, which has plain code instead.
template <class Kernels>
constexpr const Kernels* ChooseVectors(InstructionSet set, const Kernels& avx, const Kernels& avx2) {
  switch (set) {
    case InstructionSet::Avx2:
      return &avx2;
    case InstructionSet::Avx:
      return &avx;
    default:
      return nullptr;
  }
}

}  // namespace img::processing
