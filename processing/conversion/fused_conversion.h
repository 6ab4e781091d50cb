// Whole conversions of Bayer images in one pass, which give what the converter's chain of stages gives: lines are
// unpacked, changed in depth and demosaiced while they are in the nearest cache, so that the input is read once and the
// output written once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/image.h"
#include "core/instruction_set.h"
#include "core/pixel_format.h"
#include "core/processor_features.h"
#include "processing/conversion/debayering_optimized.h"
#include "processing/conversion/kept_scratch.h"

namespace img::processing {

class FusedConversion {
 public:
  explicit FusedConversion(const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor())
      : set_(InstructionSetOf(features)), fastPaths_(features) {}

  // The last stage of a chain: a fast path, or a module.
  enum class LastStage { kFast, kBilinear, kFilter, kMono };

  struct Plan {
    FormatFacts input;
    FormatFacts output;
    LastStage lastStage;
    bool keepsUnusedBits;  // those of 32-bit words that carry nothing stay as the output's memory has them
  };

  // How to convert faster than the chain, in a conversion mode; nothing if there is no way.
  std::optional<Plan> FindPlan(const IfcImage& input, PixelFormatId output, uint32_t conversionMode) const;

  // Converts by a plan for such an image. Pixels lie without gaps from output on, which doesn't overlap the input.
  // Several threads may do so at a time.
  void Convert(const Plan& plan, const IfcImage& input, uint8_t* output) const;

 private:
  template <class Sample>
  void ConvertAs(const Plan& plan, const IfcImage& input, uint8_t* output) const;

  InstructionSet set_;
  DebayeringOptimized fastPaths_;
  mutable KeptScratch scratch_;
};

}  // namespace img::processing
