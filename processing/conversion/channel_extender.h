// Makes a colour image from a grey one: every channel of the pixel takes the grey value.
#pragma once

#include "processing/module_wrappers.h"

namespace img::processing {

class ChannelExtender : public Wrapper_ConversionProcessingModule {
 public:
  bool IsInputFormatSupported(PixelFormatId format) override;
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;

 protected:
  // The format of a class at the input's depth; Invalid unless the input is unpacked mono.
  static ImageFormat ExtendTo(PixelClass target, const ImageFormat& input);
};

template <PixelClass target>
class ChannelExtenderTo final : public ChannelExtender {
 public:
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return ExtendTo(target, input); }
};

using ChannelExtender_BGR = ChannelExtenderTo<PixelClass::BGR>;
using ChannelExtender_RGB = ChannelExtenderTo<PixelClass::RGB>;
using ChannelExtender_BGRa = ChannelExtenderTo<PixelClass::BGRa>;
using ChannelExtender_RGBa = ChannelExtenderTo<PixelClass::RGBa>;

}  // namespace img::processing
