#include "processing/conversion/bayer_to_color.h"

#include "processing/conversion/bayer_sites.h"

namespace img::processing {

bool BayerToColor::IsInputFormatSupported(PixelFormatId format) { return IsUnpackedBayer(format); }

ImageFormat BayerToColor::ColourOf(PixelClass target, const ImageFormat& input) {
  if (!IsInputFormatSupported(input.format)) return {input.area, PixelFormatId::Invalid};
  return {input.area, PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(target),
                                                       PixelFormatInfo_ComponentSignificantBits(input.format))};
}

}  // namespace img::processing
