// Records of processor features, each of which an object takes for this processor's.
#pragma once

#include "core/processor_features.h"

namespace korvel_test {

inline constexpr img::ProcessorFeatures kPlainRecord{};
inline constexpr img::ProcessorFeatures kVectorRecords[] = {{.avx = 1}, {.avx2 = 1}, {.avx = 1, .avx2 = 1}};

}  // namespace korvel_test
