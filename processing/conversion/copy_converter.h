// Copies an image of any format.
#pragma once

#include "processing/processing_module.h"

namespace img::processing {

class CopyConverter : public IfcConversionProcessingModule {
 public:
  // Throws InvalidParameterUtilx unless both images have the same size, format and bytes. An image without data is
  // left alone.
  void Process(const IfcImage& input, IfcImage& output) override;
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return input; }
  bool IsInputFormatSupported(PixelFormatId) override { return true; }
};

}  // namespace img::processing
