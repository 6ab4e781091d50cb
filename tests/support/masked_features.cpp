// What test programs that link this take for the record of this processor's features: KORVEL_TEST_FEATURES tells
// whether it goes up to avx2, up to avx, or has none. Unset, it is the record itself. The linker puts MaskedFeatures
// where the library calls ProcessorFeatures::OfThisProcessor; what is shipped knows nothing of it.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "core/processor_features.h"

namespace korvel_test {

const img::ProcessorFeatures& UnmaskedFeatures() __asm__("__real__ZN3img17ProcessorFeatures15OfThisProcessorEv");
const img::ProcessorFeatures& MaskedFeatures() __asm__("__wrap__ZN3img17ProcessorFeatures15OfThisProcessorEv");

namespace {

img::ProcessorFeatures MaskFeatures(img::ProcessorFeatures features) {
  const char* const value = std::getenv("KORVEL_TEST_FEATURES");
  if (value == nullptr) return features;
  const std::string_view highest = value;
  if (highest == "none") return {};
  if (highest == "avx") {
    features.avx2 = 0;
  } else if (highest != "avx2") {
    std::fprintf(stderr, "KORVEL_TEST_FEATURES is none, avx or avx2, not '%s'\n", value);
    std::exit(2);
  }
  return features;
}

}  // namespace

const img::ProcessorFeatures& MaskedFeatures() {
  static const img::ProcessorFeatures features = MaskFeatures(UnmaskedFeatures());
  return features;
}

}  // namespace korvel_test
