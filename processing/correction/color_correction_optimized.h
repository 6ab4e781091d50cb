// Colour correction of the formats that applications use most, with the results of vector kernels: most pixels of a
// line are rounded to the nearest, and those that fill no vector are rounded down.
#pragma once

#include "core/image.h"
#include "core/instruction_set.h"
#include "core/processor_features.h"
#include "processing/correction/color_matrix.h"

namespace img::processing {

class ColorCorrectionOptimized {
 public:
  explicit ColorCorrectionOptimized(const ProcessorFeatures& features)
      : features_(features), set_(InstructionSetOf(features)) {}

  //   RGBa8, BGRa8, RGB10p32      AVX or AVX2
  //   RGB8, BGR8, RGB10, RGB12    AVX
  //   others                      none
  bool IsFormatSupported(PixelFormatId format) const;

  void SetFactors(const ColorFactors& factors) { factors_ = factors; }
  const ColorFactors& GetFactors() const { return factors_; }

  // Whether the format is supported and the image has 16 by 16 pixels or more.
  bool Accepts(const IfcImage& image) const;

  // Corrects an image that is accepted and returns true, or touches nothing and returns false. output has the format
  // and the size of input, and may be the same image.
  bool Process(const IfcImage& input, IfcImage& output) const;

 private:
  ProcessorFeatures features_;
  InstructionSet set_;
  ColorFactors factors_ = kIdentityFactors;
};

}  // namespace img::processing
