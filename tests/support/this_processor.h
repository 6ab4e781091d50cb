// The features of the processor that the tests run on, read apart from the library.
#pragma once

#include <cpuid.h>

#include "tests/model/conversion_model.h"

namespace korvel_test {

inline ModelFeatures FeaturesOfThisProcessor() {
  ModelFeatures features;
  unsigned eax = 0;
  unsigned ebx = 0;
  unsigned ecx = 0;
  unsigned edx = 0;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) features.avx = (ecx >> 28 & 1) != 0;
  if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0) features.avx2 = (ebx >> 5 & 1) != 0;
  return features;
}

}  // namespace korvel_test
