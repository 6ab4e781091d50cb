#include "processing/conversion/bayer_to_color.h"

namespace img::processing {

bool BayerToColor::IsInputFormatSupported(PixelFormatId format) {
  return PixelFormatInfo_Type(format) == PixelType::Bayer && !PixelFormatInfo_IsPacked(format);
}

ImageFormat BayerToColor::ColourOf(PixelClass target, const ImageFormat& input) {
  if (!IsInputFormatSupported(input.format)) return {input.area, PixelFormatId::Invalid};
  return {input.area, PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(target),
                                                       PixelFormatInfo_ComponentSignificantBits(input.format))};
}

}  // namespace img::processing
