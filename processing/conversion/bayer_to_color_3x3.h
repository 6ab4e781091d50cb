// Demosaic by bilinear interpolation over 3 by 3 pixels, for any Bayer phase, depth and size.
#pragma once

#include "processing/conversion/bayer_to_color.h"

namespace img::processing {

class BayerToColor3x3Simple : public BayerToColor {
 public:
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;
};

using BayerToColor3x3Simple_BGR = BayerToColorClass<BayerToColor3x3Simple, PixelClass::BGR>;
using BayerToColor3x3Simple_RGB = BayerToColorClass<BayerToColor3x3Simple, PixelClass::RGB>;
using BayerToColor3x3Simple_BGRa = BayerToColorClass<BayerToColor3x3Simple, PixelClass::BGRa>;
using BayerToColor3x3Simple_RGBa = BayerToColorClass<BayerToColor3x3Simple, PixelClass::RGBa>;
using BayerToColor3x3Simple_RGB10p30 = BayerToRgb10p32<BayerToColor3x3Simple>;

}  // namespace img::processing
