// Changes the significant bits per channel between 8, 10 and 12; channels and their order stay.
#pragma once

#include "processing/module_wrappers.h"

namespace img::processing {

// Every channel is shifted, the fourth too: no rounding on the way down, no replicated bits on the way up. Intended: a
// sample above its depth's maximum keeps its high bits as far as the target's storage goes.
class ConvertPixelDepth final : public Wrapper_ConversionProcessingModule {
 public:
  bool IsInputFormatSupported(PixelFormatId format) override { return !PixelFormatInfo_IsPacked(format); }
  // The caller gives the target's format itself.
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return input; }
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;
};

}  // namespace img::processing
