// Demosaic by fixed linear filters over 5 by 5 pixels: what a site lacks is interpolated from its own plane and
// corrected with the gradients of the plane known at the site. The weights are close to those of Malvar, He and Cutler,
// "High-quality linear interpolation for demosaicing of Bayer-patterned color images" (2004).
#pragma once

#include "processing/conversion/bayer_to_color.h"

namespace img::processing {

class BayerToColor5x5Simple : public BayerToColor {
 public:
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;
};

using BayerToColor5x5Simple_BGR = BayerToColorClass<BayerToColor5x5Simple, PixelClass::BGR>;
using BayerToColor5x5Simple_RGB = BayerToColorClass<BayerToColor5x5Simple, PixelClass::RGB>;
using BayerToColor5x5Simple_BGRa = BayerToColorClass<BayerToColor5x5Simple, PixelClass::BGRa>;
using BayerToColor5x5Simple_RGBa = BayerToColorClass<BayerToColor5x5Simple, PixelClass::RGBa>;
using BayerToColor5x5Simple_RGB10p30 = BayerToRgb10p32<BayerToColor5x5Simple>;

// A filter's sum divided by 2 to the power of divisorBits: truncated toward zero and limited to 0 and maximum.
template <unsigned divisorBits, int32_t maximum>
constexpr int32_t DivideAndClip(int32_t sum) {
  // The shift rounds negative sums down where a division would truncate them; they become 0 either way.
  const int32_t quotient = sum >> divisorBits;
  return quotient < 0 ? 0 : quotient > maximum ? maximum : quotient;
}

}  // namespace img::processing
