#include "core/processor_features.h"

#include <cpuid.h>

namespace img {
namespace {

ProcessorFeatures ReadFeatures() {
  ProcessorFeatures features;
  // One compiler declares it as signed, the other as unsigned.
  const auto highestLeaf = static_cast<unsigned>(__get_cpuid_max(0, nullptr));
  if (highestLeaf == 0) return features;
  const auto bit = [](unsigned word, unsigned index) { return static_cast<uint8_t>(word >> index & 1); };

  unsigned eax = 0;
  unsigned ebx = 0;
  unsigned ecx = 0;
  unsigned edx = 0;
  __cpuid(1, eax, ebx, ecx, edx);
  features.sse = bit(edx, 25);
  features.sse2 = bit(edx, 26);
  features.sse3 = bit(ecx, 0);
  features.ssse3 = bit(ecx, 9);
  features.sse41 = bit(ecx, 19);
  features.sse42 = bit(ecx, 20);
  features.avx = bit(ecx, 28);
  if (highestLeaf >= 7) {
    __cpuid_count(7, 0, eax, ebx, ecx, edx);
    features.avx2 = bit(ebx, 5);
  }
  return features;
}

}  // namespace

const ProcessorFeatures& ProcessorFeatures::OfThisProcessor() {
  static const ProcessorFeatures features = ReadFeatures();
  return features;
}

}  // namespace img
