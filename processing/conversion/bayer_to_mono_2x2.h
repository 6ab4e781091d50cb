// Makes a grey image from a Bayer image without a demosaic: each pixel is a weighted sum of a 2 by 2 block.
#pragma once

#include "processing/module_wrappers.h"

namespace img::processing {

class BayerToMono2x2Simple final : public Wrapper_ConversionProcessingModule {
 public:
  // Unpacked Bayer formats.
  bool IsInputFormatSupported(PixelFormatId format) override;
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override;
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;
};

}  // namespace img::processing
