// What both demosaic families share: the formats that they take and give.
#pragma once

#include "processing/module_wrappers.h"

namespace img::processing {

class BayerToColor : public Wrapper_ConversionProcessingModule {
 public:
  // Unpacked Bayer formats.
  bool IsInputFormatSupported(PixelFormatId format) override;

 protected:
  // The format of a class at the input's depth; Invalid unless the input is supported.
  ImageFormat ColourOf(PixelClass target, const ImageFormat& input);
};

// A family for one class of targets.
template <class Family, PixelClass target>
class BayerToColorClass final : public Family {
 public:
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return this->ColourOf(target, input); }
};

// The family for RGB10p32, which has one depth: the caller sees to it that the input has it too.
template <class Family>
class BayerToRgb10p32 final : public Family {
 public:
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override {
    return {input.area, this->IsInputFormatSupported(input.format) ? PixelFormatId::RGB10p32 : PixelFormatId::Invalid};
  }
};

// The grid has cells for BGR10p32 too, but no family works on them.
constexpr bool IsDemosaicTarget(const FormatFacts& out) {
  return out.type == PixelType::Color && out.id != PixelFormatId::BGR10p32;
}

}  // namespace img::processing
