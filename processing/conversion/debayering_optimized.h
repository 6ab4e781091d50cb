// The fast paths of the common Bayer conversions, which read the input and write the output once, wherever both lie.
//
// They take over from the modules where they can, with results of their own:
//   Fast       mode 1; the modules' bilinear rule, but the border is computed from the neighbours that exist
//   Luminance  mode 1; to Mono8, a true luminance of the Fast colours in single precision
//   Classic    mode 3; bilinear, sampled half a pixel to the right of and below each pixel
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/geometry.h"
#include "core/instruction_set.h"
#include "core/pixel_format.h"
#include "core/processor_features.h"

namespace img::processing {

class DebayeringOptimized {
 public:
  explicit DebayeringOptimized(const ProcessorFeatures& features)
      : features_(features), set_(InstructionSetOf(features)) {}

  // The formats between which Classic exists.
  static bool IsClassicInput(PixelFormatId format);
  static bool IsClassicOutput(PixelFormatId format);

  enum class Path { kNone, kFast, kClassic };

  // The path that Convert takes, if any.
  Path FindPath(const Size2D& size, PixelFormatId inputFormat, PixelFormatId outputFormat,
                uint32_t conversionMode) const;

  // How many columns of luminance are computed as lanes of one vector.
  size_t LuminanceLanes() const { return features_.avx2 != 0 ? 32 : 16; }

  // Converts and returns true, or touches nothing and returns false. Pixels lie without gaps from input and output on,
  // with no alignment; outputSize is not read.
  //
  //   output                      input               mode  processor
  //   Mono8                       BayerGR8, BayerRG8  1     AVX or AVX2
  //   RGB8, BGR8                  BayerGR8, BayerRG8  1     AVX
  //   RGBa8, BGRa8                BayerGR8, BayerRG8  1     AVX or AVX2
  //   RGB8, BGR8, RGBa8, BGRa8    BayerGR8, BayerRG8  3     any
  //   RGB10p32                    BayerRG10           1     AVX or AVX2
  //
  // Declines everything else, images below 16 by 16, and odd widths and heights.
  bool Convert(const uint8_t* input, size_t width, size_t height, PixelFormatId inputFormat, uint8_t* output,
               size_t outputSize, PixelFormatId outputFormat, uint32_t conversionMode) const;

 private:
  ProcessorFeatures features_;
  InstructionSet set_;
};

}  // namespace img::processing
